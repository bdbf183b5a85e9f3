// Which names mean something at a place of a template.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "merge/form_names.h"

namespace tenora {

class FormScope {
 public:
  explicit FormScope(TemplateKind kind, bool has_ledger) : kind_(kind), has_ledger_(has_ledger) {}

  TemplateKind kind() const { return kind_; }

  // A repetition around what follows; its sums count from here on, also behind it.
  void Enter(const Collection& collection);
  void Leave() { rows_.pop_back(); }

  bool InTenancyRow() const { return Holds(CollectionKind::kTenancy); }
  // Why the collection cannot be repeated here; empty where it can.
  std::string Refusal(const Collection& collection) const;
  // All names, those of the innermost repetition first.
  FactNames Names() const;
  // The names that the rows and the sums have.
  const FactNames::Name* FindOfRows(std::string_view name) const;

 private:
  bool Holds(CollectionKind kind) const;

  const TemplateKind kind_;
  const bool has_ledger_;
  std::vector<const Collection*> rows_;
  FactNames sums_;
};

}  // namespace tenora
