#include "platform/runtime/search_text.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

struct PlainForm {
  char16_t letter;
  std::u16string_view plain;
};
// What people type for letters that do not decompose, in lower case.
constexpr std::array<PlainForm, 11> kPlainForms{{{u'\u00F8', u"o"},
                                                 {u'\u0142', u"l"},
                                                 {u'\u0111', u"d"},
                                                 {u'\u0127', u"h"},
                                                 {u'\u0131', u"i"},
                                                 {u'\u00E6', u"ae"},
                                                 {u'\u0153', u"oe"},
                                                 {u'\u00F0', u"d"},
                                                 {u'\u00FE', u"th"},
                                                 {u'\u2019', u"'"},
                                                 {u'\u02BC', u"'"}}};

void AppendPlain(icu::UnicodeString& plain, UChar32 c) {
  if (u_charType(c) == U_NON_SPACING_MARK) return;
  const auto form = std::ranges::find_if(
      kPlainForms, [c](const PlainForm& each) { return static_cast<UChar32>(each.letter) == c; });
  if (form == kPlainForms.end()) {
    plain.append(c);
  } else {
    plain.append(form->plain.data(), static_cast<std::int32_t>(form->plain.size()));
  }
}

}  // namespace

std::string FoldedForSearch(std::string_view text) {
  const auto ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::ranges::all_of(text, ascii)) return ToLower(text);
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* const decomposer = icu::Normalizer2::getNFKDInstance(status);
  if (U_FAILURE(status) || !IsValidUtf8(text)) return ToLower(text);
  const auto given =
      icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
  // Folding can make characters that decompose.
  icu::UnicodeString folded = decomposer->normalize(given, status).foldCase();
  folded = decomposer->normalize(folded, status);
  if (U_FAILURE(status)) return ToLower(text);
  icu::UnicodeString plain;
  for (std::int32_t at = 0; at < folded.length(); at = folded.moveIndex32(at, 1)) {
    AppendPlain(plain, folded.char32At(at));
  }
  std::string result;
  return plain.toUTF8String(result);
}

std::vector<std::string> SearchWords(std::string_view search) {
  std::vector<std::string> words = Split(FoldedForSearch(search), " ");
  std::erase(words, "");
  return words;
}

bool HoldsWords(std::string_view folded, const std::vector<std::string>& words) {
  const auto all_in = [&words](std::string_view text) {
    return std::ranges::all_of(words, [text](const std::string& word) {
      return text.find(word) != std::string_view::npos;
    });
  };
  if (folded.find('\'') == std::string_view::npos) return all_in(folded);
  std::string without(folded);
  std::erase(without, '\'');
  return std::ranges::all_of(words, [&](const std::string& word) {
    return folded.find(word) != std::string_view::npos || without.find(word) != std::string::npos;
  });
}

}  // namespace tenora
