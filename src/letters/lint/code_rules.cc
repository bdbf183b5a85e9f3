#include "letters/lint/code_rules.h"

#include <algorithm>
#include <array>
#include <vector>

#include "merge/future_dates.h"
#include "merge/merge_codes.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Kind = TemplateFinding::Kind;

constexpr std::array<TemplateKind, 3> kAllKinds{TemplateKind::kTenant, TemplateKind::kOwner,
                                                TemplateKind::kCheque};
constexpr std::string_view kFutureDateName = "FutureDate:";
constexpr std::array<std::string_view, 4> kUnits{"Days", "Weeks", "Months", "Years"};

struct CustomForm {
  std::string_view prefix;
  TemplateKind kind;  // of the templates whose merge fills it
  std::string_view record;
  std::set<std::string> CustomFieldCodes::*fields;
};

constexpr std::array<CustomForm, 3> kCustomForms{{
    {kTenantCustomPrefix, TemplateKind::kTenant, "tenant", &CustomFieldCodes::tenant},
    {kPropertyCustomPrefix, TemplateKind::kTenant, "property", &CustomFieldCodes::property},
    {kOwnerCustomPrefix, TemplateKind::kOwner, "owner", &CustomFieldCodes::owner},
}};

std::string InBrackets(std::string_view name) {
  return std::string(kCodeStart).append(name).append(kCodeEnd);
}

std::string_view WordOf(TemplateKind kind) {
  switch (kind) {
    case TemplateKind::kTenant:
      return "tenant";
    case TemplateKind::kOwner:
      return "owner";
    case TemplateKind::kCheque:
      return "cheque";
  }
  return {};
}

bool IsMenuEntry(std::string_view name) {
  return name == kFutureDateItem || name == kPromptMessageItem;
}

// Every name that this kind's merge replaces, and the openings of the forms it knows.
std::vector<std::string_view> NamesOf(TemplateKind kind) {
  std::vector<std::string_view> names;
  for (const MergeCode& code : MergeCodesOf(kind)) {
    if (code.source != CodeSource::kMenuCommand) names.push_back(code.name);
  }
  if (kind == TemplateKind::kTenant) names.push_back(kBuildingReceiptNumber);
  return names;
}

std::vector<std::string_view> OpeningsOf(TemplateKind kind) {
  std::vector<std::string_view> openings;
  for (const CustomForm& form : kCustomForms) {
    if (form.kind == kind) openings.push_back(form.prefix);
  }
  if (kind != TemplateKind::kCheque) openings.push_back(kFutureDateName);
  return openings;
}

bool Holds(const std::vector<std::string_view>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

// The kind of template whose merge would fill the code.
std::optional<TemplateKind> OtherKindOf(std::string_view name, TemplateKind own) {
  for (const TemplateKind kind : kAllKinds) {
    const auto opens = [&](std::string_view opening) { return name.starts_with(opening); };
    if (kind != own && (Holds(NamesOf(kind), name) || std::ranges::any_of(OpeningsOf(kind), opens)))
      return kind;
  }
  return std::nullopt;
}

// A name as it would be without slips of the keyboard: one blank between words, none at the ends,
// none around a colon.
std::string Tidied(std::string_view name) {
  std::string tidy = ReplaceAll(std::string(name), "\xC2\xA0", " ");
  std::ranges::replace(tidy, '\t', ' ');
  std::ranges::replace(tidy, '_', ' ');
  while (tidy.find("  ") != std::string::npos) tidy = ReplaceAll(std::move(tidy), "  ", " ");
  tidy = ReplaceAll(ReplaceAll(std::move(tidy), " :", ":"), ": ", ":");
  return std::string(TrimBlanks(tidy));
}

// The name of the kind's that `name` was meant to be, in its right spelling: letter case, blanks
// and small misspellings aside. Of the forms with parameters only the opening is put right.
std::string Respelt(std::string_view name, TemplateKind kind) {
  const std::string tidy = Tidied(name);
  const std::size_t colon = tidy.find(':');
  const std::string_view whole(tidy);
  if (colon != std::string::npos) {
    const std::string opening = NearestName(whole.substr(0, colon + 1), OpeningsOf(kind));
    return opening.empty() ? "" : opening + tidy.substr(colon + 1);
  }
  return NearestName(whole, NamesOf(kind));
}

// The word of a form that is meant; empty where the kind has none, or a code is meant.
std::string MeantWord(std::string_view name, TemplateKind kind) {
  if (kind == TemplateKind::kCheque || !Respelt(name, kind).empty()) return {};
  return NearestName(name, {"End If", "End Each", "Else", "Else If"});
}

std::string DidYouMean(std::string_view name, TemplateKind kind) {
  std::string meant = Respelt(name, kind);
  if (meant.empty()) meant = MeantWord(name, kind);
  if (!meant.empty()) return "write " + InBrackets(meant) + " if that is what you mean";
  return "the Insert menu lists the codes of " + std::string(WordOf(kind)) + " templates";
}

Complaint OtherTemplate(std::string_view name, TemplateKind meant, TemplateKind kind) {
  return {Kind::kOtherTemplate,
          InBrackets(name) + " is a code of " + std::string(WordOf(meant)) +
              " templates and stays as it is in this " + std::string(WordOf(kind)) + " template",
          DidYouMean(name, kind)};
}

Complaint NotReplaced(std::string_view name, TemplateKind kind) {
  const std::string code = InBrackets(name);
  if (IsMenuEntry(name)) {
    return {Kind::kMenuEntry,
            code + " is an entry of the Insert menu, not a code: it stays in the letter",
            name == kFutureDateItem ? "write <<FutureDate:14:Days>>, or choose the entry"
                                    : "write <<?Your question?>>, or choose the entry"};
  }
  if (const auto other = OtherKindOf(name, kind)) return OtherTemplate(name, *other, kind);
  const std::string meant = Respelt(name, kind);
  if (!meant.empty() && EqualsNoCase(meant, name)) {
    return {Kind::kLetterCase,
            code + " differs from the code in letter case and stays in the letter",
            "write " + InBrackets(meant)};
  }
  if (!meant.empty() && EqualsNoCase(meant, Tidied(name))) {
    return {Kind::kBlanks, code + " differs from the code in spacing and stays in the letter",
            "write " + InBrackets(meant)};
  }
  return {MeantWord(name, kind).empty() ? Kind::kUnknownCode : Kind::kFormSlip,
          code + " is not a merge code and stays in the letter", DidYouMean(name, kind)};
}

std::optional<Complaint> CheckCustomField(std::string_view name, const CustomForm& form,
                                          const CustomFieldCodes* codes) {
  const std::string field(name.substr(form.prefix.size()));
  const std::string code = InBrackets(name);
  const std::string gone = " and is removed from every letter";
  if (field.empty()) {
    return Complaint{Kind::kCustomField, code + " does not name a field" + gone,
                     "write the field's code after the colon"};
  }
  if (codes == nullptr) return std::nullopt;
  const std::set<std::string>& known = codes->*form.fields;
  if (known.contains(field)) return std::nullopt;
  const std::string problem =
      code + " names a field that no " + std::string(form.record) + " has" + gone;
  for (const CustomForm& other : kCustomForms) {
    if ((codes->*other.fields).contains(field) && other.kind == form.kind) {
      return Complaint{Kind::kCustomField, problem,
                       "it is a field of the " + std::string(other.record) + ": write " +
                           InBrackets(std::string(other.prefix).append(field))};
    }
  }
  const std::string nearest = NearestName(field, {known.begin(), known.end()});
  return Complaint{Kind::kCustomField, problem,
                   nearest.empty()
                       ? "give the field's code as the management package lists it"
                       : "write " + InBrackets(std::string(form.prefix).append(nearest)) +
                             " if that is what you mean"};
}

// A building for which no counter is kept has the first number in every letter.
std::optional<Complaint> CheckReceiptNumber(const CustomFieldCodes* codes) {
  if (codes == nullptr || codes->uncounted_buildings.empty()) return std::nullopt;
  const std::size_t count = codes->uncounted_buildings.size();
  return Complaint{Kind::kReceiptNumber,
                   InBrackets(kBuildingReceiptNumber) +
                       " prints 1000 in every letter for building " +
                       *codes->uncounted_buildings.begin() +
                       (count > 1 ? " and " + std::to_string(count - 1) + " more" : "") +
                       ", which has no counter",
                   "give each such building a custom field NxtReceipt with the last number issued"};
}

Complaint BadFutureDate(std::string_view name, std::string_view why) {
  return {Kind::kFutureDate,
          InBrackets(name).append(why).append(
              ": neither this nor any later future date is filled in, and an error is shown"),
          "write a whole number and a unit, as in <<FutureDate:14:Days>>"};
}

std::optional<Complaint> CheckFutureDate(std::string_view name, Date today) {
  const std::vector<std::string> parts = Split(name.substr(kFutureDateName.size()), ":");
  if (parts.size() < 2) return BadFutureDate(name, " has no unit");
  try {
    const std::optional<Date> date =
        FutureDate(std::string(kCodeStart).append(name).append(kCodeEnd), today);
    if (!date) {
      const std::string nearest = NearestName(TrimBlanks(parts[1]), {kUnits.begin(), kUnits.end()});
      return Complaint{Kind::kFutureDate,
                       InBrackets(name) + " has the unknown unit \"" + parts[1] +
                           "\": it prints nothing, or the date of the future date before it",
                       nearest.empty() ? "write Days, Weeks, Months or Years"
                                       : "write " + nearest + ", in these letters"};
    }
    const std::int32_t count = ToInt32(parts[0]);
    if (static_cast<double>(count) != ToDouble(parts[0])) {
      return Complaint{
          Kind::kFutureDate,
          InBrackets(name) + " counts " + std::to_string(count) + ": fractions are rounded",
          "write a whole number"};
    }
    if (count < 0) {
      return Complaint{Kind::kFutureDate, InBrackets(name) + " gives a date in the past",
                       "leave out the minus sign unless it is intended"};
    }
  } catch (const RuntimeError& error) {
    return BadFutureDate(name, error.number() == error_number::kTypeMismatch
                                   ? " has a count that is not a number"
                                   : " goes beyond the calendar");
  }
  return std::nullopt;
}

const CustomForm* CustomFormOf(std::string_view name) {
  const auto form = std::ranges::find_if(
      kCustomForms, [&](const CustomForm& one) { return name.starts_with(one.prefix); });
  return form == kCustomForms.end() ? nullptr : &*form;
}

}  // namespace

CodeForm FormOf(std::string_view name) {
  if (name.starts_with("?")) return CodeForm::kPrompt;
  if (name.starts_with(kFutureDateName)) return CodeForm::kFutureDate;
  return CustomFormOf(name) != nullptr ? CodeForm::kCustomField : CodeForm::kCatalogue;
}

std::string_view OpeningOf(std::string_view name) {
  switch (FormOf(name)) {
    case CodeForm::kPrompt:
      return name.substr(0, 1);
    case CodeForm::kFutureDate:
      return kFutureDateName;
    case CodeForm::kCustomField:
      return CustomFormOf(name)->prefix;
    case CodeForm::kCatalogue:
      return name;
  }
  return name;
}

std::optional<Complaint> CheckCode(std::string_view name, bool holds_code, TemplateKind kind,
                                   Date today, const CustomFieldCodes* fields) {
  const CodeForm form = FormOf(name);
  if (form == CodeForm::kPrompt) {
    if (kind != TemplateKind::kCheque) return std::nullopt;
    return Complaint{Kind::kOtherTemplate, InBrackets(name) + " is not asked for a cheque",
                     "remove it: a cheque has no prompt messages"};
  }
  if (const auto openings = OpeningsOf(kind);
      std::ranges::none_of(openings, [&](std::string_view o) { return name.starts_with(o); })) {
    if (!Holds(NamesOf(kind), name)) return NotReplaced(name, kind);
    return name == kBuildingReceiptNumber ? CheckReceiptNumber(fields) : std::nullopt;
  }
  if (holds_code) return std::nullopt;
  if (form == CodeForm::kFutureDate) return CheckFutureDate(name, today);
  return CheckCustomField(name, *CustomFormOf(name), fields);
}

std::string CodeForLookalike(std::string_view name, TemplateKind kind) {
  const std::string tidy = Tidied(name);
  if (tidy.size() > 2 && tidy.front() == '?' && tidy.back() == '?') return InBrackets(tidy);
  const std::string meant = Respelt(name, kind);
  const bool with_parameters = meant.find(':') != std::string::npos;
  const bool certain = with_parameters || (!meant.empty() && EqualsNoCase(meant, tidy));
  return certain ? InBrackets(meant) : "";
}

std::string AdviceForLookalike(std::string_view name, TemplateKind kind) {
  const std::string code = CodeForLookalike(name, kind);
  if (!code.empty()) return "write " + code;
  const std::string tidy = Tidied(name);
  const bool is_code = IsMenuEntry(tidy) || std::ranges::any_of(kAllKinds, [&](TemplateKind other) {
                         const std::string there = Respelt(tidy, other);
                         return !there.empty() &&
                                (there.find(':') != std::string::npos || EqualsNoCase(there, tidy));
                       });
  return is_code ? DidYouMean(name, kind) : "";
}

}  // namespace tenora
