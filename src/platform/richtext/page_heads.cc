#include "platform/richtext/page_heads.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/richtext/document_text.h"

namespace tenora::richtext {
namespace {

constexpr int kLastPageNumber = 100'000;
constexpr std::string_view kHeader = "header", kFooter = "footer";  // followed by the side

// Uses the section's header and footer for this side on these pages, unless they have one already.
void Load(const DocumentSection& section, std::string_view word, PageSide side, PageHeads* heads) {
  for (const HeadGroup* group : section.head_groups) {
    const std::string_view name = group->word;
    if (name.size() < kHeader.size() || name.substr(kHeader.size()) != word) continue;
    auto& sides = name.starts_with(kFooter) ? heads->footers : heads->headers;
    PageHeads::Blocks& head = sides[static_cast<std::size_t>(side)];
    if (head == nullptr || (!Shows(*head) && Shows(group->blocks))) head = &group->blocks;
  }
}

Bullet::Kind NumberStyleOf(const PageSetup& page) {
  constexpr std::pair<std::string_view, Bullet::Kind> kStyles[] = {
      {"pgnlcrm", Bullet::Kind::kLowerRoman},
      {"pgnucrm", Bullet::Kind::kUpperRoman},
      {"pgnlcltr", Bullet::Kind::kLowerLetter},
      {"pgnucltr", Bullet::Kind::kUpperLetter}};
  for (const auto& [word, style] : kStyles) {
    if (PageWord(page, word)) return style;
  }
  return Bullet::Kind::kDecimal;
}

}  // namespace

// The parameter of a control word of the page set-up, 1 where it has none; nothing without the
// word.
std::optional<int> PageWord(const PageSetup& page, std::string_view word) {
  std::string_view words = page.other_words;
  while (!words.empty()) {
    words.remove_prefix(1);
    const std::string_view one = words.substr(0, words.find('\\'));
    words.remove_prefix(one.size());
    if (!one.starts_with(word)) continue;
    int number = 1;
    const char* const end = one.data() + one.size();
    const char* const digits = one.data() + word.size();
    if (digits == end || std::from_chars(digits, end, number).ptr == end) return number;
  }
  return std::nullopt;
}

PageSetup WithGutter(PageSetup page, const PageSetup& first) {
  const int whole = PageWord(first, "gutter").value_or(0);
  const int gutter = std::clamp(PageWord(page, "guttersxn").value_or(whole), 0, kLargestPage);
  if (gutter == 0) return page;
  if (PageWord(first, "gutterprl"))
    page.top += gutter;
  else if (PageWord(page, "rtlgutter"))
    page.right += gutter;
  else
    page.left += gutter;
  return page;
}

PageSide PageHeads::SideOf(int page, int number) const {
  if (page == 1 && first_differs) return PageSide::kFirst;
  return even_differs && number % 2 == 0 ? PageSide::kEven : PageSide::kCommon;
}

PageHeads PageHeadsOf(const Document& document, const DocumentSection& section) {
  PageHeads heads;
  heads.number_style = NumberStyleOf(*section.page);
  heads.first_differs = PageWord(*section.page, "titlepg").value_or(0) != 0;
  heads.even_differs = PageWord(document.page, "facingp").value_or(0) != 0;
  const bool restarts = PageWord(*section.page, "pgnrestart").value_or(0) != 0;
  if (restarts || section.page == &document.page) {
    const auto number = PageWord(*section.page, restarts ? "pgnstarts" : "pgnstart");
    heads.first_number = std::clamp(number.value_or(1), 0, kLastPageNumber);
  }
  if (heads.first_differs) Load(section, "f", PageSide::kFirst, &heads);
  if (heads.even_differs) {
    Load(section, "l", PageSide::kEven, &heads);
    Load(section, "r", PageSide::kCommon, &heads);
    Load(section, "", PageSide::kEven, &heads);
  }
  Load(section, "", PageSide::kCommon, &heads);
  Load(section, "r", PageSide::kCommon, &heads);
  return heads;
}

}  // namespace tenora::richtext
