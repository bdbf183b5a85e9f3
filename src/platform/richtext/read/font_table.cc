#include "platform/richtext/read/font_table.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "platform/richtext/characters/byte_decoder.h"
#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/write/format_writer.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::array<std::string_view, 8> kFamilies{"fnil",    "froman", "fswiss", "fmodern",
                                                    "fscript", "fdecor", "ftech",  "fbidi"};
// A name in characters, and the bytes and characters it is read from: a double-byte code page
// writes a character in two bytes, so that what is kept whole is also read back whole.
constexpr int kLongestName = 128;
constexpr std::size_t kLongestSource = 2 * kLongestName;
constexpr char32_t kByte = 0x110000;  // beyond every character

bool IsSymbolName(std::string_view name) {
  return EqualsNoCase(name, "Symbol") || EqualsNoCase(name, "Webdings") ||
         StartsWithNoCase(name, "Wingdings");
}

// Without the characters that a font table cannot hold: controls, and the end of an entry.
std::string DecodeName(std::u32string_view name, const CodePage& page) {
  std::string text;
  ByteDecoder decoder;
  int length = 0;
  std::u32string decoded;
  for (const char32_t unit : name) {
    decoded.clear();
    // An escaped brace or backslash may be the second byte of a pair.
    if (unit >= kByte || (decoder.pending() && unit < 0x80)) {
      decoder.Take(static_cast<unsigned char>(unit & 0xff), page, &decoded);
    } else {
      decoder.Reset();
      decoded = unit;
    }
    for (const char32_t one : decoded) {
      const char32_t character = CleanCharacter(one);
      if (character < 0x20 || character == ';' || length == kLongestName) continue;
      AppendUtf8(text, character);
      ++length;
    }
  }
  return std::string(TrimBlanks(text));
}

// Old systems had a font of its own for each script: "Arial CE" is Arial in code page 1250.
bool JoinScript(std::string* name, bool has_charset, int* charset) {
  static constexpr std::pair<std::string_view, int> kScripts[] = {
      {" CE", 238},       {" Cyr", 204},    {" Greek", 161},
      {" Tur", 162},      {" Baltic", 186}, {" (Hebrew)", 177},
      {" (Arabic)", 178}, {" (Thai)", 222}, {" (Vietnamese)", 163}};
  for (const auto& [suffix, script] : kScripts) {
    if (name->size() <= suffix.size() || !name->ends_with(suffix)) continue;
    if (has_charset && *charset != script) continue;
    name->resize(name->size() - suffix.size());
    *charset = script;
    return true;
  }
  return false;
}

}  // namespace

void FontTable::Word(const Token& token) {
  if (token.text == "f") {
    EndEntry();
    entry_.number = token.param;
    entry_open_ = true;
  } else if (token.text == "fcharset") {
    has_charset_ = token.param != 1;
    entry_.charset = token.param;
  } else if (token.text == "fprq") {
    entry_.pitch = std::clamp(token.param, 0, 2);
  } else if (token.text == "cpg") {
    entry_code_page_ = token.param;
  } else if (std::ranges::find(kFamilies, token.text) != kFamilies.end()) {
    entry_.family = token.text.substr(1);
  }
}

void FontTable::Byte(unsigned char byte) {
  if (byte == ';') {
    EndEntry();
  } else if (byte >= 0x20 && name_.size() < kLongestSource) {
    name_ += static_cast<char32_t>(kByte + byte);
  }
}

void FontTable::Character(char32_t character) {
  if (name_.size() < kLongestSource) name_ += character;
}

void FontTable::EndEntry() {
  Font font = std::exchange(entry_, Font());
  const std::u32string name = std::exchange(name_, {});
  const bool has_charset = std::exchange(has_charset_, false);
  const int wanted_page = std::exchange(entry_code_page_, 0);
  if (!std::exchange(entry_open_, false)) return;

  int page =
      has_charset ? CodePageOfCharset(font.charset, document_code_page_) : document_code_page_;
  font.name =
      DecodeName(name, code_pages_->Get(page == kSymbolCodePage ? document_code_page_ : page));
  if (font.name.empty()) font.name = kDefaultFontName;
  const bool one_script = JoinScript(&font.name, has_charset, &font.charset);
  if (one_script && !has_charset) page = CodePageOfCharset(font.charset, document_code_page_);
  if (!has_charset && IsSymbolName(font.name)) page = kSymbolCodePage;
  if (IsKnownCodePage(wanted_page) && page != kSymbolCodePage) page = wanted_page;
  font.charset = CharsetOfCodePage(page);
  const int number = font.number;
  numbers_[number] = {Add(std::move(font)), page};
}

int FontTable::Add(Font font) {
  const bool symbols = font.charset == kSymbolCharset;
  const auto [entry, added] =
      by_name_.try_emplace({ToLower(font.name), symbols}, static_cast<int>(fonts_.size()));
  if (added) fonts_.push_back(std::move(font));
  return entry->second;
}

int FontTable::Position(int number) {
  const auto found = numbers_.find(number);
  return found == numbers_.end() ? DefaultPosition() : found->second.position;
}

int FontTable::DefaultPosition() {
  const auto found = numbers_.find(default_number_);
  if (found != numbers_.end()) return found->second.position;
  // A font of symbols cannot stand in for a default font that is missing.
  const bool usable = !fonts_.empty() && fonts_.front().charset != kSymbolCharset;
  if (usable) return 0;
  Font font;
  font.name = kDefaultFontName;
  font.family = "roman";
  font.charset = CharsetOfCodePage(document_code_page_);
  return Add(std::move(font));
}

int FontTable::PositionOf(std::string_view name) {
  Font font;
  std::u32string characters;
  while (!name.empty()) characters += TakeCodePoint(name);
  font.name = DecodeName(characters, DefaultPage());
  if (font.name.empty()) return DefaultPosition();
  font.charset = IsSymbolName(font.name) ? kSymbolCharset : CharsetOfCodePage(document_code_page_);
  return Add(std::move(font));
}

std::optional<int> FontTable::FontOfMark(int position) {
  if (position == DefaultPosition()) return std::nullopt;
  const Font& font = fonts_[static_cast<std::size_t>(position)];
  return font.charset == kSymbolCharset ? std::nullopt : std::optional(position);
}

int FontTable::SymbolPosition() {
  DefaultPosition();
  return Add(BulletFont());
}

const CodePage& FontTable::PageOf(int number) {
  const auto found = numbers_.find(number);
  if (found == numbers_.end() && number != default_number_) return PageOf(default_number_);
  return code_pages_->Get(found == numbers_.end() ? document_code_page_ : found->second.code_page);
}

}  // namespace tenora::richtext
