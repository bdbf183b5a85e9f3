#include "letters/letter_names.h"

#include <algorithm>
#include <optional>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "merge/condition.h"
#include "merge/recipient_facts.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/format.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kTemplateName = "Template", kNumberName = "Number";
// A name on the disk has 255 bytes.
constexpr std::size_t kLongestPattern = 1000;

const FactNames& FactNamesOf(bool tenants) {
  return tenants ? TenantFactNames() : OwnerFactNames();
}

// How the pattern's writer may have meant it. Raises ConditionError for no such name.
std::string KnownName(std::string_view name, bool tenants) {
  const std::string trimmed(TrimBlanks(name));
  for (const std::string_view own : {kTemplateName, kNumberName}) {
    if (EqualsNoCase(trimmed, own)) return std::string(own);
  }
  const FactNames& facts = FactNamesOf(tenants);
  if (facts.IsField(trimmed)) return trimmed;
  if (const FactNames::Name* found = facts.Find(trimmed)) return found->name;
  if (EqualsNoCase(trimmed, kLastLetterFact)) {
    throw ConditionError(
        std::string(kLastLetterFact) +
            " cannot name a file: it is the day of this very letter once it is saved",
        "{Print Date} is the day of the run");
  }
  std::vector<std::string_view> all{kTemplateName, kNumberName};
  std::ranges::copy(facts.All(), std::back_inserter(all));
  const std::string meant = NearestName(trimmed, all);
  std::string possible;
  for (const std::string_view one : all)
    possible += (possible.empty() ? "" : ", ") + std::string(one);
  throw ConditionError("There is no \"" + trimmed + "\" for a file's name" +
                           (meant.empty() ? "" : "; do you mean \"" + meant + "\"?"),
                       "There are: " + possible);
}

// Letters of one day sort together whatever the time.
std::string TextOf(const Fact& fact) {
  const auto* date = std::get_if<Date>(&fact);
  return date == nullptr ? PlainText(fact) : FormatDate(*date, "yyyy-mm-dd");
}

Fact MadeUp(const std::string& name, bool tenants, Date today) {
  const FactNames::Name* known = FactNamesOf(tenants).Find(name);
  switch (known == nullptr ? FactType::kField : known->type) {
    case FactType::kDate:
      return today;
    case FactType::kMoney:
      return std::string("450.00");
    case FactType::kNumber:
      return 2.0;
    case FactType::kYesNo:
      return false;
    case FactType::kText:
    case FactType::kField:
      break;
  }
  if (EndsWithNoCase(name, "Name")) return std::string("Jane Smith");
  if (EndsWithNoCase(name, "Tenant Code")) return std::string("T00012");
  if (EndsWithNoCase(name, "Property Code")) return std::string("PR00012");
  return name;
}

}  // namespace

std::string StoredNamePattern(Settings& settings, std::string_view template_kind) {
  return settings.GetSettingText(
      "Mail", template_kind == kTemplates ? kTenantFileNames : kOwnerFileNames, "");
}

LetterNames::LetterNames(std::string_view pattern, std::string_view template_kind)
    : tenants_(template_kind == kTemplates) {
  if (TrimBlanks(pattern).empty()) pattern = "{Template}";
  if (pattern.size() > kLongestPattern) throw ConditionError("The pattern is too long");
  while (!pattern.empty()) {
    const std::size_t brace = pattern.find_first_of("{}");
    if (brace != 0) pieces_.push_back({std::string(pattern.substr(0, brace)), false});
    if (brace == std::string_view::npos) break;
    const std::size_t end = pattern.find_first_of("{}", brace + 1);
    if (pattern[brace] == '}' || end == std::string_view::npos || pattern[end] == '{') {
      throw ConditionError("A brace is missing in \"" + std::string(pattern) +
                           "\": names stand in braces, as {Template}");
    }
    pieces_.push_back({KnownName(pattern.substr(brace + 1, end - brace - 1), tenants_), true});
    pattern.remove_prefix(end + 1);
  }
}

bool LetterNames::NeedsFacts() const {
  return std::ranges::any_of(pieces_, [](const Piece& piece) {
    return piece.fact && piece.text != kTemplateName && piece.text != kNumberName;
  });
}

std::string LetterNames::NameWith(const std::function<Fact(const std::string& name)>& fact_of,
                                  const std::string& template_name,
                                  const std::string& number) const {
  std::string name;
  for (const Piece& piece : pieces_) {
    if (!piece.fact) {
      name += piece.text;
    } else if (piece.text == kTemplateName) {
      name += template_name;
    } else if (piece.text == kNumberName) {
      name += number;
    } else {
      name += TextOf(fact_of(piece.text));
    }
  }
  return TrimBlanks(name).empty() ? template_name : name;
}

std::string LetterNames::Example(Date today) const {
  const std::string name = NameWith(
      [&](const std::string& fact) { return MadeUp(fact, tenants_, today); }, "Rent review", "07");
  return SafeFileName(name, kLongestGeneratedTitle) + ".rtf";
}

std::string LetterNames::NameOf(const MergeTarget& letter, std::size_t number,
                                std::size_t count) const {
  const std::string& template_name = letter.letter.LetterTitle;
  std::string digits = std::to_string(number);
  digits.insert(0, std::to_string(count).size() - digits.size(), '0');
  const auto name_with = [&](const FactSource& facts) {
    return NameWith([&](const std::string& name) { return facts.Get(name); }, template_name,
                    digits);
  };
  if (!NeedsFacts()) return NameWith({}, template_name, digits);
  Session& session = letter.session;
  const Date now = session.platform.clock.Now();
  const OpenedDatabase open(session.database);
  if (tenants_) {
    if (TenantRecord* tenant = session.caches.FindTenant(letter.letter.TenantCode)) {
      const LookedUpTenancy details(session, *tenant, 0);
      return name_with(TenantFacts(details, now));
    }
  } else {
    if (const OwnerRecord* owner = session.caches.FindOwner(letter.letter.RecipientName)) {
      const LookedUpOwner details(session, *owner);
      return name_with(OwnerFacts(details, now));
    }
  }
  return template_name;
}

void RequireSoundPattern(const std::string& pattern, const std::string& template_kind) {
  try {
    static_cast<void>(LetterNames(pattern, template_kind));
  } catch (const ConditionError& error) {
    throw StandardError(error_number::kInvalidProcedureCall,
                        std::string(error.what()) + ". " + error.possible());
  }
}

}  // namespace tenora
