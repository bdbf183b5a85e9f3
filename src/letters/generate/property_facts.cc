#include "letters/generate/property_facts.h"

#include <algorithm>

namespace tenora {
namespace {

using P = const AllProperties&;

struct PropertyFact {
  std::string_view name;
  FactType type;
  PropertyNeeds needs;
  Fact (*get)(P properties, std::size_t number);
};

constexpr PropertyFact kFacts[] = {
    {"Property Code", FactType::kText, {}, [](P p, std::size_t i) { return TextFact(p.Code(i)); }},
    {"Property Address",
     FactType::kText,
     {.addresses = true},
     [](P p, std::size_t i) { return TextFact(p.Address(i)); }},
    {"Property Rent",
     FactType::kMoney,
     {.tenancies = true},
     [](P p, std::size_t i) { return Fact(p.Rent(i)); }},
    {"Property Tenancies",
     FactType::kNumber,
     {.tenancies = true},
     [](P p, std::size_t i) { return Fact(static_cast<double>(p.Tenancies(i))); }},
    {"Property Arrears",
     FactType::kMoney,
     {.arrears = true},
     [](P p, std::size_t i) { return Fact(p.Arrears(i)); }},
};

const PropertyFact* FactOf(std::string_view name) {
  const auto* const fact = std::ranges::find(kFacts, name, &PropertyFact::name);
  return fact == std::end(kFacts) ? nullptr : fact;
}

}  // namespace

const FactNames& PropertyFactNames() {
  static const FactNames kNames = [] {
    FactNames names;
    for (const PropertyFact& fact : kFacts) names.Add(fact.name, fact.type);
    return names;
  }();
  return kNames;
}

PropertyNeeds PropertyNeedsOf(std::span<const std::string> names) {
  PropertyNeeds needs;
  for (const std::string& name : names) {
    const PropertyFact* const fact = FactOf(name);
    if (fact == nullptr) continue;
    needs.addresses |= fact->needs.addresses;
    needs.tenancies |= fact->needs.tenancies;
    needs.arrears |= fact->needs.arrears;
  }
  return needs;
}

Fact PropertyFacts::Get(std::string_view name) const {
  const PropertyFact* const fact = FactOf(name);
  if (fact == nullptr) return owner_.Get(name);
  return properties_ == nullptr ? Fact() : fact->get(*properties_, number_);
}

}  // namespace tenora
