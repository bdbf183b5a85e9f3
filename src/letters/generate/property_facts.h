// The facts of owners who are listed once for each of their properties: the owner's, and those of
// the property, which are named as in <<Each Property>>.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "merge/fact.h"
#include "rental/all_properties.h"

namespace tenora {

const FactNames& PropertyFactNames();
// What must be read for those of the names that are a property's.
PropertyNeeds PropertyNeedsOf(std::span<const std::string> names);

// A row's facts. Without a property its own are none.
class PropertyFacts : public FactSource {
 public:
  // All outlive this.
  PropertyFacts(const FactSource& owner, const AllProperties* properties, std::size_t number)
      : owner_(owner), properties_(properties), number_(number) {}
  Fact Get(std::string_view name) const override;

 private:
  const FactSource& owner_;
  const AllProperties* const properties_;
  const std::size_t number_;
};

}  // namespace tenora
