#include "platform/richtext/read/style_sheet.h"

#include <iterator>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tenora::richtext {
namespace {

// Bounds what one \s word can cost in a hostile document.
constexpr std::size_t kMostWords = 256;
constexpr std::size_t kLongestChain = 32;

bool IsBookkeeping(std::string_view name) {
  static const std::unordered_set<std::string_view> kWords{
      "snext",   "slink",    "sqformat", "spriority", "ssemihidden", "sunhideused", "slocked",
      "shidden", "sautoupd", "additive", "pard",      "plain",       "par",         "sbasedon"};
  return kWords.contains(name);
}

}  // namespace

void StyleSheet::BeginEntry() {
  entry_ = Style();
  other_kind_ = false;
}

void StyleSheet::Word(const Token& token) {
  if (token.text == "s") {
    entry_.number = token.param;
  } else if (token.text == "cs") {
    entry_.number = token.param;
    entry_.character = true;
  } else if (token.text == "ds" || token.text == "ts" || token.text == "tsrowd") {
    other_kind_ = true;
  } else if (token.text == "sbasedon") {
    entry_.based_on = token.param;
  } else if (!IsBookkeeping(token.text) && entry_.words.size() < kMostWords) {
    entry_.words.push_back(token);
  }
}

void StyleSheet::EndEntry() {
  if (other_kind_) return;
  Styles& styles = entry_.character ? character_ : paragraph_;
  const int number = entry_.number;
  styles[number] = std::move(entry_);
}

const std::vector<Token>& StyleSheet::ParagraphStyle(int number) {
  return Resolve(&paragraph_, number);
}

const std::vector<Token>& StyleSheet::CharacterStyle(int number) {
  return Resolve(&character_, number);
}

const std::vector<Token>& StyleSheet::Resolve(Styles* styles, int number) {
  static const std::vector<Token> kNone;
  const auto found = styles->find(number);
  if (found == styles->end()) return kNone;
  Style& style = found->second;
  if (std::exchange(style.resolved, true)) return style.words;

  std::set<int> chain{number};
  for (int base = style.based_on; chain.size() < kLongestChain && chain.insert(base).second;) {
    const auto next = styles->find(base);
    if (next == styles->end() || style.words.size() + next->second.words.size() > kMostWords) break;
    style.words.insert(style.words.begin(), next->second.words.begin(), next->second.words.end());
    if (next->second.resolved) break;
    base = next->second.based_on;
  }
  return style.words;
}

}  // namespace tenora::richtext
