#include "merge/forms/form_scope.h"

#include <algorithm>

namespace tenora {

void FormScope::Enter(const Collection& collection) {
  rows_.push_back(&collection);
  sums_.Add(collection.CountName(), FactType::kNumber);
  for (const std::string& total : collection.TotalNames()) sums_.Add(total, FactType::kMoney);
}

bool FormScope::Holds(CollectionKind kind) const {
  return std::ranges::any_of(rows_, [&](const Collection* row) { return row->kind == kind; });
}

std::string FormScope::Refusal(const Collection& collection) const {
  const std::string each = "<<Each " + std::string(collection.name) + ">>";
  const bool in_tenancy = kind_ == TemplateKind::kTenant || Holds(CollectionKind::kTenancy);
  if (collection.of_tenancy) {
    return in_tenancy ? "" : each + " belongs to a tenancy: it stands inside <<Each Tenancy>>";
  }
  if (kind_ != TemplateKind::kOwner) return each + " is for owner templates";
  if (in_tenancy) return each + " cannot stand inside <<Each Tenancy>>";
  if (collection.kind == CollectionKind::kProperty && Holds(CollectionKind::kProperty)) {
    return each + " cannot stand inside another one";
  }
  return "";
}

FactNames FormScope::Names() const {
  FactNames names;
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) names.Add((*row)->Names());
  names.Add(sums_);
  if (has_ledger_) names.Add(kOpeningBalance, FactType::kMoney);
  names.Add(RecipientFactNames(kind_));
  return names;
}

const FactNames::Name* FormScope::FindOfRows(std::string_view name) const {
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
    if (const FactNames::Name* const found = (*row)->Names().Find(name)) return found;
  }
  if (const FactNames::Name* const found = sums_.Find(name)) return found;
  static const FactNames ledger = [] {
    FactNames names;
    names.Add(kOpeningBalance, FactType::kMoney);
    return names;
  }();
  return has_ledger_ ? ledger.Find(name) : nullptr;
}

}  // namespace tenora
