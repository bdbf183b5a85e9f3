#include "letters/recipients.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <array>

#include "letters/template_library.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kClosedMark = "(Closed) ";
constexpr std::string_view kPropertyStart = " (";

// A row of a cache as the list needs it.
struct Candidate {
  const std::string& name;
  const std::string& key;       // as RecipientRow's
  const std::string& code;      // of the tenancy
  const std::string& property;  // shown in brackets, unless empty
  const std::string& email;
  bool closed;
};

// Calls `use` for each row of the cache that the list is made of, in cache order.
template <typename Use>
void ForEachCandidate(const Caches& caches, std::string_view kind, bool by_property, Use&& use) {
  static const std::string kNone;
  if (kind == kTemplates) {
    for (const TenantRecord& tenant : caches.Tenants) {
      use(Candidate{tenant.KeyName, tenant.Reference, tenant.Reference, tenant.PropertyCode,
                    tenant.Email, tenant.Closed},
          true);
    }
  } else if (kind == kOwnerTemplates && by_property) {
    for (const PropertyRecord& property : caches.Properties) {
      use(Candidate{property.OwnerName, property.Code, kNone, property.Code, property.Email,
                    property.ClosedStatus},
          true);
    }
  } else if (kind == kOwnerTemplates) {
    for (const OwnerRecord& owner : caches.Owners) {
      use(Candidate{owner.Name, owner.Code, kNone, kNone, owner.Email, owner.ClosedStatus}, false);
    }
  }
}

std::string ItemText(const Candidate& row, bool with_property) {
  std::string text(row.closed ? kClosedMark : "");
  text += row.name;
  if (with_property) text.append(kPropertyStart).append(row.property).append(")");
  return text;
}

// Without letter case and accents: "Élodie" and "ELODIE" fold alike.
std::u32string Folded(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* const decomposer = unorm2_getNFDInstance(&status);
  std::u32string folded;
  while (!text.empty()) {
    const auto character = static_cast<UChar32>(TakeCodePoint(text));
    std::array<UChar, 16> parts{};
    int32_t length = -1;
    if (U_SUCCESS(status) && character >= 0x80) {
      UErrorCode failed = U_ZERO_ERROR;
      length = unorm2_getDecomposition(decomposer, character, parts.data(),
                                       static_cast<int32_t>(parts.size()), &failed);
      if (U_FAILURE(failed)) length = -1;
    }
    if (length < 0) {
      folded += static_cast<char32_t>(u_foldCase(character, U_FOLD_CASE_DEFAULT));
      continue;
    }
    for (int32_t at = 0; at < length;) {
      UChar32 part = 0;
      U16_NEXT(parts.data(), at, length, part);
      if (u_charType(part) == U_NON_SPACING_MARK) continue;
      folded += static_cast<char32_t>(u_foldCase(part, U_FOLD_CASE_DEFAULT));
    }
  }
  return folded;
}

std::vector<std::u32string> FoldedWords(std::string_view search) {
  std::vector<std::u32string> words;
  for (const std::string& word : Split(search, " ")) {
    if (!word.empty()) words.push_back(Folded(word));
  }
  return words;
}

bool HoldsAll(std::string_view text, const std::vector<std::u32string>& words) {
  if (words.empty()) return true;
  const std::u32string folded = Folded(text);
  return std::ranges::all_of(
      words, [&](const std::u32string& word) { return folded.find(word) != std::u32string::npos; });
}

}  // namespace

std::vector<RecipientRow> ListRecipients(const Caches& caches, std::string_view template_kind,
                                         const RecipientFilter& filter) {
  const std::vector<std::u32string> words = FoldedWords(filter.search);
  std::vector<RecipientRow> rows;
  const auto pass = [&](bool closed) {
    ForEachCandidate(
        caches, template_kind, filter.by_property, [&](const Candidate& row, bool with_property) {
          if (row.closed != closed) return;
          const bool listed = !row.email.empty() || !filter.exclude_no_email_available ||
                              !filter.exclude_no_email_ticked;
          std::string text = ItemText(row, with_property);
          if (!listed || !HoldsAll(text, words)) return;
          rows.push_back({std::move(text), row.key, {row.name, row.code}});
        });
  };
  pass(false);
  if (filter.closed) pass(true);
  return rows;
}

bool MatchesSearch(std::string_view item_text, std::string_view search) {
  return HoldsAll(item_text, FoldedWords(search));
}

}  // namespace tenora
