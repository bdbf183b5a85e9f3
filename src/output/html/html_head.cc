#include "output/html/html_head.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "output/html/html_characters.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/runtime/text.h"

namespace tenora::html {

using richtext::Token;
using richtext::Tokenizer;

namespace {

constexpr std::int32_t kHighestFont = 32767;
// No real face name comes near this; a longer one would be repeated in every font tag.
constexpr std::size_t kLongestFace = 128;

// Whether an odd number of backslashes precedes `position`.
bool IsEscaped(std::string_view source, std::size_t position) {
  std::size_t start = position;
  while (start > 0 && source[start - 1] == '\\') --start;
  return (position - start) % 2 == 1;
}

// Whether `sign` at `position` is the whole of its control word, or ends in no letter itself.
bool EndsWord(std::string_view source, std::size_t position, std::string_view sign) {
  const std::size_t behind = position + sign.size();
  return !richtext::IsWordLetter(sign.back()) || behind >= source.size() ||
         !richtext::IsWordLetter(source[behind]);
}

// Position of the first `sign` that is no part of an escaped backslash or a longer word, or npos.
std::size_t FindControl(std::string_view source, std::string_view sign) {
  // Letters hold few of these and many backslashes: skipping ahead beats stopping at each.
  const std::boyer_moore_horspool_searcher searcher(sign.begin(), sign.end());
  for (auto from = source.begin();; ++from) {
    from = std::search(from, source.end(), searcher);
    if (from == source.end()) return std::string_view::npos;
    const std::size_t position = from - source.begin();
    if (!IsEscaped(source, position) && EndsWord(source, position, sign)) return position;
  }
}

// Position of the brace that opens the group around `position`, or npos.
std::size_t StartOfGroup(std::string_view source, std::size_t position) {
  std::size_t closed = 0;
  while (position-- > 0) {
    const char c = source[position];
    if ((c != '{' && c != '}') || IsEscaped(source, position)) continue;
    if (c == '}') {
      ++closed;
    } else if (closed-- == 0) {
      return position;
    }
  }
  return std::string_view::npos;
}

void AppendHex(std::string& digits, std::int32_t part) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  part = std::clamp(part, 0, 255);
  digits += kDigits[part / 16];
  digits += kDigits[part % 16];
}

// The name of a font while its entry is read.
class FaceName {
 public:
  void Add(std::string_view text) {
    if (name_.size() <= kLongestFace) AppendText(name_, text.substr(0, kLongestFace + 1), true);
  }
  void AddEscape(std::string_view digits) {
    const std::string_view character = EscapedCharacter(digits);
    if (name_.size() <= kLongestFace && !character.starts_with(kRtfFragment)) name_ += character;
  }
  std::string Take() {
    std::string name = ReplaceAll(std::string(TrimBlanks(name_)), "\"", "&quot;");
    name_.clear();
    return name.size() <= kLongestFace ? name : std::string();
  }

 private:
  std::string name_;
};

// Whether the source holds `sign` ("\list\") anywhere; an escaped backslash starts none.
bool HasControl(std::string_view source, std::string_view sign) {
  return FindControl(source, sign) != std::string_view::npos;
}

// Takes the group of the first control word `word` ("\fonttbl") out of the source and returns it,
// braces included: empty when the word does not occur or is in no group. A group that is never
// closed goes to the end.
std::string CutGroup(std::string& source, std::string_view word) {
  const std::size_t position = FindControl(source, word);
  if (position == std::string::npos) return {};
  const std::size_t start = StartOfGroup(source, position);
  if (start == std::string::npos) return {};
  const std::size_t end = richtext::EndOfGroup(source, start + 1);
  std::string group = source.substr(start, end - start);
  source.erase(start, end - start);
  return group;
}

}  // namespace

ColourTable::ColourTable(std::string_view group) {
  bool has_red = false;
  std::int32_t red = 0, green = 0, blue = 0;
  Tokenizer tokens(group, Tokenizer::Form::kLiteral);
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    const std::int32_t number = token.param;
    if (token.IsWord("red")) {
      has_red = true;
      red = number;
    }
    if (token.IsWord("green")) green = number;
    if (token.IsWord("blue")) blue = number;
    if (token.kind != Token::Kind::kText || token.text.find(';') == std::string_view::npos)
      continue;
    if (has_red) {
      for (const std::int32_t part : {red, green, blue}) AppendHex(digits_, part);
    }
    has_red = false;
    red = green = blue = 0;
  }
}

std::string_view ColourTable::Find(std::int32_t number) const {
  constexpr std::size_t kLength = 6;
  if (number < 1 || static_cast<std::size_t>(number) > digits_.size() / kLength) return {};
  return std::string_view(digits_).substr((number - 1) * kLength, kLength);
}

FontTable::FontTable(std::string_view group) {
  std::optional<std::int32_t> number;
  FaceName face;
  std::size_t depth = 0, entry_depth = 0;
  const auto finish = [&] {
    std::string name = face.Take();
    if (number && *number >= 0 && *number <= kHighestFont && !name.empty())
      faces_.insert_or_assign(*number, std::move(name));
    number.reset();
  };
  Tokenizer tokens(group, Tokenizer::Form::kLiteral);
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    const bool in_entry = number && depth == entry_depth;
    switch (token.kind) {
      case Token::Kind::kOpen:
        ++depth;
        break;
      case Token::Kind::kClose:
        if (in_entry) finish();
        if (depth > 0) --depth;
        break;
      case Token::Kind::kWord:
        if (token.text == "f" && token.has_param && !number) {
          number = token.param;
          entry_depth = depth;
        }
        break;
      case Token::Kind::kByte:
        if (in_entry) face.AddEscape(token.text);
        break;
      default:
        if (!in_entry || (token.kind != Token::Kind::kText && !token.IsEscapedCharacter())) break;
        const std::size_t end = token.text.find(';');
        face.Add(token.text.substr(0, end));
        if (end != std::string_view::npos) finish();
    }
  }
}

const std::string* FontTable::Find(std::int32_t number) const {
  const auto found = faces_.find(number);
  return found == faces_.end() ? nullptr : &found->second;
}

Head TakeHead(std::string& rtf) {
  Head head;
  head.is_list_document = HasControl(rtf, "\\list\\");
  head.colours = ColourTable(CutGroup(rtf, "\\colortbl"));
  head.fonts = FontTable(CutGroup(rtf, "\\fonttbl"));
  for (const char* word : {"\\stylesheet", "\\info", "\\listtable", "\\listoverridetable"})
    CutGroup(rtf, word);
  return head;
}

}  // namespace tenora::html
