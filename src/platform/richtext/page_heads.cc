#include "platform/richtext/page_heads.h"

#include <algorithm>
#include <charconv>

#include "platform/richtext/document_text.h"

namespace tenora::richtext {
namespace {

constexpr std::string_view kHeader = "header", kFooter = "footer";  // followed by the side

// Uses the document's header and footer for this side on these pages, unless they have one already.
void Load(const Document& document, std::string_view word, PageSide side, PageHeads* heads) {
  for (const HeadGroup& group : document.head_groups) {
    const std::string_view name = group.word;
    if (name.size() < kHeader.size() || name.substr(kHeader.size()) != word) continue;
    auto& sides = name.starts_with(kFooter) ? heads->footers : heads->headers;
    PageHeads::Blocks& head = sides[static_cast<std::size_t>(side)];
    if (head == nullptr && Shows(group.blocks)) head = &group.blocks;
  }
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

PageSide PageHeads::SideOf(int page) const {
  if (page == 1 && first_differs) return PageSide::kFirst;
  return even_differs && (first_number + page - 1) % 2 == 0 ? PageSide::kEven : PageSide::kCommon;
}

PageHeads PageHeadsOf(const Document& document) {
  PageHeads heads;
  heads.first_differs = PageWord(document.page, "titlepg").value_or(0) != 0;
  heads.even_differs = PageWord(document.page, "facingp").value_or(0) != 0;
  const bool restarts = PageWord(document.page, "pgnrestart").value_or(0) != 0;
  const auto number = PageWord(document.page, restarts ? "pgnstarts" : "pgnstart");
  heads.first_number = std::clamp(number.value_or(1), 0, 100'000);
  if (heads.first_differs) Load(document, "f", PageSide::kFirst, &heads);
  if (heads.even_differs) {
    Load(document, "l", PageSide::kEven, &heads);
    Load(document, "r", PageSide::kCommon, &heads);
    Load(document, "", PageSide::kEven, &heads);
  }
  Load(document, "", PageSide::kCommon, &heads);
  Load(document, "r", PageSide::kCommon, &heads);
  return heads;
}

}  // namespace tenora::richtext
