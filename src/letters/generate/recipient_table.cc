#include "letters/recipient_table.h"

#include <algorithm>
#include <map>
#include <utility>

#include "letters/custom_field_codes.h"
#include "letters/generate/fact_needs.h"
#include "letters/generate/last_letters.h"
#include "letters/generate/property_facts.h"
#include "letters/template_library.h"
#include "merge/merge_codes.h"
#include "merge/recipient_facts.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/search_text.h"
#include "rental/all_owners.h"
#include "rental/all_tenancies.h"

namespace tenora {
namespace {

std::string DayText(const Locale& locale, Date date) {
  const CalendarTime time = date.Calendar();
  std::string text = locale.ShortDate(date);
  if (time.hour != 0 || time.minute != 0) text += " " + locale.MediumTime(date);
  return text;
}

// What a fact is sorted by: facts of one column have one type, but for fields of the office's own,
// of which numbers come before other texts.
struct SortKey {
  int kind = 0;  // 0: a number or a date, 1: a text, 2: none
  double number = 0;
  std::string text = {};
};

SortKey KeyOf(const Fact& fact, bool field) {
  if (const auto* number = std::get_if<double>(&fact)) return {.number = *number};
  if (const auto* money = std::get_if<Currency>(&fact)) return {.number = money->ToDouble()};
  if (const auto* date = std::get_if<Date>(&fact)) return {.number = ToDouble(Value(*date))};
  if (const auto* yes = std::get_if<bool>(&fact)) return {.number = *yes ? 1.0 : 0.0};
  const auto* const text = std::get_if<std::string>(&fact);
  if (text == nullptr) return {.kind = 2};
  if (field) {
    try {
      return {.number = ToDouble(Value(*text))};
    } catch (const RuntimeError&) {
      // Another text.
    }
  }
  return {.kind = 1, .text = FoldedForSearch(*text)};
}

bool Before(const SortKey& left, const SortKey& right, bool descending) {
  const bool none = left.kind == 2 || right.kind == 2;
  if (none) return left.kind < right.kind;
  const SortKey& first = descending ? right : left;
  const SortKey& second = descending ? left : right;
  if (first.kind != second.kind) return first.kind < second.kind;
  return first.kind == 0 ? first.number < second.number : first.text < second.text;
}

// Of an owner whom nobody can write to for want of a name, nothing is known but the code.
class NamelessOwner : public FactSource {
 public:
  explicit NamelessOwner(const std::string& code) : code_(code) {}

  Fact Get(std::string_view name) const override {
    return name == "Code" ? TextFact(code_) : Fact();
  }

 private:
  const std::string& code_;
};

FactNames WithLastLetter(FactNames names) {
  names.Add(kLastLetterFact, FactType::kDate);
  return names;
}

}  // namespace

const FactNames* RecipientFactNames(std::string_view template_kind) {
  static const FactNames kOfTenants = WithLastLetter(TenantFactNames());
  static const FactNames kOfOwners = [] {
    FactNames names = OwnerFactNames();
    names.AddNames(PropertyFactNames());
    return WithLastLetter(std::move(names));
  }();
  if (template_kind == kTemplates) return &kOfTenants;
  if (template_kind == kOwnerTemplates) return &kOfOwners;
  return nullptr;
}

FactNames RecipientFactNames(Session& session, std::string_view template_kind) {
  FactNames names;
  if (const FactNames* const fixed = RecipientFactNames(template_kind)) names.AddNames(*fixed);
  const CustomFieldCodes codes = ReadCustomFieldCodes(session.database);
  const auto add = [&](std::string_view prefix, const std::set<std::string>& fields) {
    for (const std::string& field : fields) {
      if (!field.empty()) names.Add(std::string(prefix) + field, FactType::kField);
    }
  };
  if (template_kind == kTemplates) {
    add(kTenantCustomPrefix, codes.tenant);
    add(kPropertyCustomPrefix, codes.property);
  } else if (template_kind == kOwnerTemplates) {
    add(kOwnerCustomPrefix, codes.owner);
  }
  return names;
}

bool IsPropertyFact(std::string_view template_kind, std::string_view name) {
  return template_kind == kOwnerTemplates && PropertyFactNames().Find(name) != nullptr;
}

const std::vector<std::string>& UsualColumns(std::string_view template_kind, bool by_property) {
  static const std::vector<std::string> kOfTenants{
      "Tenant Name",        "Property Code",    "Property Address", "Email",
      "Current Rent",       "Balance Owing",    "Paid To Date",     "Days Behind",
      "Tenancy Start Date", "Tenancy End Date", "Rent Review Date", "Next Inspection",
      "Last Letter"};
  static const std::vector<std::string> kOfOwners{
      "Name",       "Postal Address 1", "Postal Address 2", "Email Address",
      "Properties", "Tenancies",        "Arrears",          "Last Letter"};
  // With the code, for owners without a name.
  static const std::vector<std::string> kOfProperties{
      "Name",          "Code",          "Property Code",      "Property Address",
      "Email Address", "Property Rent", "Property Tenancies", "Property Arrears",
      "Last Letter"};
  if (template_kind != kOwnerTemplates) return kOfTenants;
  return by_property ? kOfProperties : kOfOwners;
}

std::string FactText(const Locale& locale, const Fact& fact) {
  if (const auto* text = std::get_if<std::string>(&fact)) return *text;
  if (const auto* number = std::get_if<double>(&fact)) return NumberText(*number);
  if (const auto* money = std::get_if<Currency>(&fact)) {
    return locale.CurrencyText(money->ToDouble());
  }
  if (const auto* date = std::get_if<Date>(&fact)) return DayText(locale, *date);
  if (const auto* yes = std::get_if<bool>(&fact)) return *yes ? "yes" : "no";
  return {};
}

// Where the facts of a row come from.
struct RecipientTable::Facts {
  Facts(Session& session, const Subject& subject, std::span<const std::string> names,
        const std::stop_token& stop)
      : now(session.platform.clock.Now()), by_property(subject.by_property) {
    if (subject.template_kind == kTemplates) {
      tenancies.emplace(session, TenancyNeedsOf(names), stop);
    } else if (subject.template_kind == kOwnerTemplates) {
      std::vector<std::string> of_owners;
      std::ranges::copy_if(names, std::back_inserter(of_owners), [&](const std::string& name) {
        return !IsPropertyFact(subject.template_kind, name);
      });
      owners.emplace(session, OwnerNeedsOf(of_owners), stop);
      if (by_property) properties.emplace(session, PropertyNeedsOf(names), stop);
      for (std::size_t i = 0; i < owners->size(); ++i) {
        owner_by_name.emplace((*owners)[i].Record().Name, i);
      }
      for (const PropertyRecord& property : session.caches.Properties) {
        owner_of_property.push_back(property.OwnerCode);
      }
    }
  }

  // By the recipient as a run has it: an owner by name, whichever property the row is of.
  void SetLastLetters(const std::vector<RecipientRow>& rows, const LastLetters& letters) {
    for (const RecipientRow& row : rows) {
      const std::optional<Date> day = letters.Of(row.recipient);
      if (tenancies) {
        tenancies->SetLastLetter(row.cached, day);
      } else if (const std::optional<std::size_t> owner = OwnerOf(row)) {
        owners->SetLastLetter(*owner, day);
      }
    }
  }

  // None for a property of an owner without a name.
  std::optional<std::size_t> OwnerOf(const RecipientRow& row) const {
    if (!by_property) return row.cached;
    const auto found = owner_by_name.find(row.recipient.name);
    return found == owner_by_name.end() ? std::nullopt : std::optional(found->second);
  }

  // Calls `use` with the facts of a row; an owner's letter is of the first owner of its name.
  template <typename Use>
  auto With(const RecipientRow& row, Use&& use) const {
    if (tenancies) return use(TenantFacts((*tenancies)[row.cached], now));
    const AllProperties* const of_rows = properties ? &*properties : nullptr;
    const std::optional<std::size_t> owner = OwnerOf(row);
    if (!owner) {
      const NamelessOwner nameless(owner_of_property.at(row.cached));
      return use(PropertyFacts(nameless, of_rows, row.cached));
    }
    const OwnerFacts facts((*owners)[*owner], now);
    return use(PropertyFacts(facts, of_rows, row.cached));
  }

  const Date now;
  const bool by_property;
  std::optional<AllTenancies> tenancies;
  std::optional<AllOwners> owners;
  std::optional<AllProperties> properties;  // where owners are listed by them
  std::map<std::string, std::size_t> owner_by_name;
  std::vector<std::string> owner_of_property;  // codes, as the properties are cached
};

RecipientTable::RecipientTable(Session& session, const Subject& subject,
                               std::span<const std::string> names, const std::stop_token& stop)
    : rows_(ListRecipients(session.caches, subject.template_kind,
                           {.closed = true, .by_property = subject.by_property})),
      today_(session.platform.clock.Today()),
      facts_(std::make_unique<Facts>(session, subject, names, stop)) {
  const bool last_letters = std::ranges::find(names, kLastLetterFact) != names.end();
  if (last_letters && !subject.template_name.empty()) {
    facts_->SetLastLetters(rows_, LastLetters(subject.data_folder, subject.template_kind,
                                              subject.template_name, rows_, stop));
  }
}
RecipientTable::~RecipientTable() = default;
RecipientTable::RecipientTable(RecipientTable&&) noexcept = default;
RecipientTable& RecipientTable::operator=(RecipientTable&&) noexcept = default;

RecipientTable::Cell RecipientTable::At(std::size_t row, std::string_view name) const {
  try {
    return {.fact = facts_->With(rows_.at(row),
                                 [&](const FactSource& facts) { return facts.Get(name); })};
  } catch (const RuntimeError& error) {
    return {.problem = ErrorText(error)};
  }
}

std::string RecipientTable::Remark(std::size_t row) const {
  const RecipientRow& one = rows_.at(row);
  if (facts_->tenancies || facts_->OwnerOf(one)) return {};
  const std::string& code = facts_->owner_of_property.at(one.cached);
  return "property " + one.key + ": its owner " + code + " has no name in the rental database";
}

RecipientTable::Selection RecipientTable::Select(const RecipientFilter& filter,
                                                 const Condition* condition) const {
  Selection selection;
  const RecipientTest listed(filter);
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    if (!listed(rows_[row])) continue;
    try {
      const bool holds =
          condition == nullptr || facts_->With(rows_[row], [&](const FactSource& facts) {
            return condition->Holds(facts, today_);
          });
      if (holds) selection.rows.push_back(row);
    } catch (const RuntimeError& error) {
      selection.undecided.emplace_back(row, ErrorText(error));
    }
  }
  return selection;
}

void RecipientTable::Sort(std::vector<std::size_t>& rows, std::string_view name,
                          bool descending) const {
  const bool field = name.find(':') != std::string_view::npos;
  std::vector<std::pair<SortKey, std::size_t>> keyed;
  for (const std::size_t row : rows) keyed.emplace_back(KeyOf(At(row, name).fact, field), row);
  std::ranges::stable_sort(keyed, [&](const auto& left, const auto& right) {
    return Before(left.first, right.first, descending);
  });
  std::ranges::transform(keyed, rows.begin(), [](const auto& one) { return one.second; });
}

}  // namespace tenora
