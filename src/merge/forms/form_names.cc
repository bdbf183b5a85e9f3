#include "merge/form_names.h"

#include <algorithm>
#include <array>

#include "merge/recipient_facts.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Type = FactType;

constexpr bool kNotSummed = false;

constexpr CollectionColumn kPaymentColumns[] = {
    {"Payment Date", Type::kDate},     {"Payment Amount", Type::kMoney},
    {"Payment Tax", Type::kMoney},     {"Payment Excl.", Type::kMoney},
    {"Payment Number", Type::kNumber}, {"Payment Tender", Type::kText},
    {"Payment Account", Type::kText},  {"Payment Comment", Type::kText},
};

constexpr CollectionColumn kPeriodColumns[] = {
    {"Period From", Type::kDate},           {"Period To", Type::kDate},
    {"Period Rent", Type::kMoney},          {"Period Paid", Type::kMoney},
    {"Period Extra Charges", Type::kMoney}, {"Period Extra Charges Paid", Type::kMoney},
    {"Period Outstanding", Type::kMoney},
};

constexpr CollectionColumn kInspectionColumns[] = {
    {"Inspection Date", Type::kDate},
    {"Inspection Time", Type::kText},
    {"Inspection Remark", Type::kText},
};

constexpr CollectionColumn kRentChangeColumns[] = {
    {"Rent Change Date", Type::kDate},
    {"Rent Change Value", Type::kMoney, kNotSummed},
};

constexpr CollectionColumn kLedgerColumns[] = {
    {"Entry Date", Type::kDate},
    {"Entry Text", Type::kText},
    {"Entry Charge", Type::kMoney},
    {"Entry Payment", Type::kMoney},
    {"Running Balance", Type::kMoney, kNotSummed},
};

constexpr CollectionColumn kPropertyColumns[] = {
    {"Property Code", Type::kText},        {"Property Address", Type::kText},
    {"Property Address 1", Type::kText},   {"Property Address 2", Type::kText},
    {"Property Address 3", Type::kText},   {"Property Rent", Type::kMoney},
    {"Property Tenancies", Type::kNumber}, {"Property Arrears", Type::kMoney},
};

constexpr Collection kCollections[] = {
    {CollectionKind::kPayment, "Payment", "Payments", true, kPaymentColumns, "Payment Date"},
    {CollectionKind::kRentPeriod, "Rent Period", "Rent Periods", true, kPeriodColumns,
     "Period From"},
    {CollectionKind::kOutstandingPeriod, "Outstanding Period", "Outstanding Periods", true,
     kPeriodColumns, "Period From"},
    {CollectionKind::kInspection, "Inspection", "Inspections", true, kInspectionColumns,
     "Inspection Date"},
    {CollectionKind::kRentChange, "Rent Change", "Rent Changes", true, kRentChangeColumns,
     "Rent Change Date"},
    {CollectionKind::kLedgerEntry, "Ledger Entry", "Ledger Entries", true, kLedgerColumns,
     "Entry Date"},
    {CollectionKind::kProperty, "Property", "Properties", false, kPropertyColumns},
    {CollectionKind::kTenancy, "Tenancy", "Tenancies", false, {}},
};

constexpr FormatName kFormats[] = {
    // name, format, for text, numbers, amounts, dates
    {"long", ValueFormat::kLong, false, false, false, true},
    {"short", ValueFormat::kShort, false, false, false, true},
    {"month", ValueFormat::kMonth, false, false, false, true},
    {"weekday", ValueFormat::kWeekday, false, false, false, true},
    {"words", ValueFormat::kWords, false, true, true, false},
    {"currency", ValueFormat::kCurrency, false, false, true, false},
    {"whole", ValueFormat::kWhole, false, true, true, false},
    {"capitals", ValueFormat::kCapitals, true, false, false, false},
    {"small letters", ValueFormat::kSmallLetters, true, false, false, false},
    {"title", ValueFormat::kTitle, true, false, false, false},
};

FactNames NamesOf(std::span<const CollectionColumn> columns) {
  FactNames names;
  for (const CollectionColumn& column : columns) names.Add(column.name, column.type);
  return names;
}

std::string Folded(std::string_view name) {
  std::string folded;
  for (const std::string& word : Split(ToLower(name), " ")) {
    if (!word.empty()) folded += (folded.empty() ? "" : " ") + word;
  }
  return folded;
}

}  // namespace

const FactNames& Collection::Names() const {
  static const std::array<FactNames, std::size(kCollections)> names = [] {
    std::array<FactNames, std::size(kCollections)> made;
    for (std::size_t i = 0; i < made.size(); ++i) {
      made[i] = kCollections[i].kind == CollectionKind::kTenancy ? TenantFactNames()
                                                                 : NamesOf(kCollections[i].columns);
    }
    return made;
  }();
  return names[static_cast<std::size_t>(kind)];
}

std::string Collection::CountName() const { return std::string(kCountStart).append(plural); }

std::vector<std::string> Collection::TotalNames() const {
  std::vector<std::string> totals;
  for (const std::string_view amount : Names().All()) {
    if (Names().Find(amount)->type != Type::kMoney) continue;
    const auto column = std::ranges::find(columns, amount, &CollectionColumn::name);
    if (column != columns.end() && !column->summed) continue;
    totals.push_back(std::string(kTotalStart).append(amount));
  }
  return totals;
}

std::span<const Collection> Collections() { return kCollections; }

const Collection* FindCollection(std::string_view name) {
  const std::string folded = Folded(name);
  const auto found = std::ranges::find_if(
      kCollections, [&](const Collection& one) { return ToLower(one.name) == folded; });
  return found == std::end(kCollections) ? nullptr : found;
}

std::span<const FormatName> FormatNames() { return kFormats; }

const FormatName* FindFormat(std::string_view name) {
  const std::string folded = Folded(name);
  const auto found = std::ranges::find(kFormats, folded, &FormatName::name);
  return found == std::end(kFormats) ? nullptr : found;
}

bool Fits(const FormatName& format, FactType type) {
  switch (type) {
    case Type::kText:
    case Type::kField:
      return format.for_text;
    case Type::kNumber:
      return format.for_number;
    case Type::kMoney:
      return format.for_money;
    case Type::kDate:
      return format.for_date;
    case Type::kYesNo:
      return false;
  }
  return false;
}

std::string FormatsFor(FactType type) {
  std::string names;
  for (const FormatName& format : kFormats) {
    if (Fits(format, type)) names.append(names.empty() ? "" : ", ").append(format.name);
  }
  return names;
}

const FactNames& RecipientFactNames(TemplateKind kind) {
  static const FactNames none;
  if (kind == TemplateKind::kCheque) return none;
  return kind == TemplateKind::kTenant ? TenantFactNames() : OwnerFactNames();
}

std::vector<std::string_view> PrintedFacts(TemplateKind kind) {
  std::vector<std::string_view> facts;
  for (const std::string_view name : RecipientFactNames(kind).All()) {
    if (std::ranges::find(MergeCodesOf(kind), name, &MergeCode::name) == MergeCodesOf(kind).end()) {
      facts.push_back(name);
    }
  }
  return facts;
}

}  // namespace tenora
