#include "platform/richtext/rtf_reader.h"

#include <algorithm>
#include <utility>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/read/reader_core.h"
#include "platform/richtext/table_numbers.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kMemoryBudget = std::size_t{1} << 30;

}  // namespace

Reader::Reader(std::string_view source)
    : tokens_(source), fonts_(&code_pages_), budget_(kMemoryBudget) {
  groups_.emplace_back();
  stories_.push_back(std::make_unique<Story>(Context()));
}

Document Reader::Read() {
  while (!ended_) {
    const Token token = tokens_.Next();
    if (token.kind == Token::Kind::kEnd) break;
    Handle(token);
  }
  Finish();
  return std::move(document_);
}

void Reader::Finish() {
  FlushPending();
  // What a cut-off source leaves open is closed; its last paragraph keeps its formatting.
  if (stories_.size() > 1 || !copies_.empty()) {
    while (groups_.size() > 2) CloseGroup();
  }
  document_.blocks = CurrentStory().Finish(ResolvedFormat());
  document_.default_font = fonts_.DefaultPosition();
  const int page = fonts_.document_code_page();
  // Only Windows has a name for its code page in the head; text of others is written as 1252.
  document_.code_page = CodePageOfCharset(CharsetOfCodePage(page), kDefaultCodePage);
  document_.fonts = fonts_.Take();
  document_.colours = colours_.Take();
  page_.Apply(&document_);
  Renumber(&document_);
}

void Reader::Handle(Token token) {
  if (skip_ > 0 && SkipFallback(&token)) return;
  const bool is_text = token.kind == Token::Kind::kText || token.kind == Token::Kind::kByte ||
                       token.kind == Token::Kind::kSymbol;
  if (!is_text && (decoder_.pending() || high_surrogate_ != 0) &&
      !(token.kind == Token::Kind::kWord && (token.text == "u" || token.text == "uc")))
    FlushPending();
  switch (token.kind) {
    case Token::Kind::kOpen:
      return OpenGroup();
    case Token::Kind::kClose:
      return CloseGroup();
    case Token::Kind::kWord:
      return Word(token);
    case Token::Kind::kSymbol:
      return Symbol(token.text.front());
    case Token::Kind::kByte:
      return Byte(static_cast<unsigned char>(token.param));
    case Token::Kind::kText:
      return Text(token.text);
    case Token::Kind::kBinary:
      return Binary(token.text);
    case Token::Kind::kEnd:
      return;
  }
}

// Takes what stands behind \uN for readers without Unicode. A group's end and a word that is no
// character end it early.
bool Reader::SkipFallback(Token* token) {
  switch (token->kind) {
    case Token::Kind::kByte:
    case Token::Kind::kSymbol:
    case Token::Kind::kBinary:
      --skip_;
      return true;
    case Token::Kind::kText: {
      const std::size_t count =
          std::min<std::size_t>(static_cast<std::size_t>(skip_), token->text.size());
      skip_ -= static_cast<int>(count);
      token->text.remove_prefix(count);
      return token->text.empty();
    }
    case Token::Kind::kWord:
      if (CharacterOfWord(token->text) != 0) {
        --skip_;
        return true;
      }
      break;
    default:
      break;
  }
  skip_ = 0;
  return false;
}

void Reader::Symbol(char symbol) {
  if (symbol == '*') {
    Top().starred = Top().fresh;
    return;
  }
  if (decoder_.pending() && static_cast<unsigned char>(symbol) >= 0x20)
    return Byte(static_cast<unsigned char>(symbol));
  const char32_t character = CharacterOfSymbol(symbol);
  const Destination destination = Top().destination;
  const bool escape = symbol == '\\' || symbol == '{' || symbol == '}';
  const bool printable = symbol > 0x20 && symbol < 0x7f;
  if (!escape && printable &&
      (destination == Destination::kCopy || destination == Destination::kPicture)) {
    MarkCopied();
    return CurrentCopy().source.Symbol(symbol);
  }
  if (character != 0) Character(character);
}

void Reader::Text(std::string_view ascii) {
  if (decoder_.pending()) {
    Byte(static_cast<unsigned char>(ascii.front()));
    ascii.remove_prefix(1);
    if (ascii.empty()) return;
  }
  if (high_surrogate_ != 0) FlushPending();
  Top().fresh = false;
  switch (Top().destination) {
    case Destination::kText:
      return CurrentStory().Text(ascii, ResolvedFormat(), CurrentField());
    case Destination::kCopy:
      MarkCopied();
      if (Top().shown) CurrentCopy().shown_text += ascii;
      return CurrentCopy().source.Text(ascii);
    case Destination::kPicture:
      MarkCopied();
      picture_.Hex(ascii);
      return CurrentCopy().source.Data(ascii);
    case Destination::kSkip:
      return;
    default:
      for (const char c : ascii) Byte(static_cast<unsigned char>(c));
  }
}

void Reader::Byte(unsigned char byte) {
  if (high_surrogate_ != 0) FlushPending();
  switch (Top().destination) {
    case Destination::kSkip:
      return;
    case Destination::kFonts:
      return fonts_.Byte(byte);
    case Destination::kColours:
      if (byte == ';') colours_.EndEntry();
      return;
    case Destination::kLevelText:
      if (byte < 0x80) return lists_.LevelText(byte);
      break;
    default:
      break;
  }
  if (const auto character = decoder_.Take(byte, Page())) Character(*character);
}

void Reader::Unicode(int number) {
  const int units = number < 0 ? number + 0x10000 : number;
  skip_ = Top().fallback;
  const auto character = static_cast<char32_t>(units);
  const bool low = units >= 0xdc00 && units <= 0xdfff;
  if (high_surrogate_ != 0 && low) {
    const char32_t high = std::exchange(high_surrogate_, 0);
    return Character(0x10000 + ((high - 0xd800) << 10) + (character - 0xdc00));
  }
  FlushPending();
  if (units >= 0xd800 && units <= 0xdbff)
    high_surrogate_ = character;
  else
    Character(character);
}

// A lead byte or high surrogate that nothing completed.
void Reader::FlushPending() {
  decoder_.Reset();
  if (std::exchange(high_surrogate_, 0) != 0) Character(0xfffd);
}

void Reader::Character(char32_t raw) {
  Top().fresh = false;
  const Destination destination = Top().destination;
  if (destination == Destination::kLevelText) return lists_.LevelText(raw);
  const char32_t character = CleanCharacter(raw);
  if (character == 0) return;
  switch (destination) {
    case Destination::kText: {
      std::string text;
      AppendUtf8(text, character);
      return CurrentStory().Text(text, ResolvedFormat(), CurrentField());
    }
    case Destination::kCopy:
      MarkCopied();
      if (Top().shown) AppendUtf8(CurrentCopy().shown_text, character);
      return CurrentCopy().source.Character(character);
    case Destination::kFonts:
      return fonts_.Character(character);
    case Destination::kTitle:
      AppendUtf8(document_.title, character);
      return;
    case Destination::kListBefore:
    case Destination::kListAfter:
      return ListCharacter(character);
    default:
      return;
  }
}

void Reader::ListCharacter(char32_t character) {
  bullet_.Character(character, Top().destination == Destination::kListBefore);
}

void Reader::Binary(std::string_view bytes) {
  Top().fresh = false;
  if (Top().destination == Destination::kPicture) picture_.Binary(bytes);
  if (Top().destination != Destination::kPicture && Top().destination != Destination::kCopy) return;
  if (bytes.empty()) return;
  MarkCopied();
  CurrentCopy().source.Binary(bytes);
}

CharFormat Reader::ResolvedFormat() {
  CharFormat format = Top().format;
  if (format.font == kDefaultFont) format.font = fonts_.DefaultPosition();
  return format;
}

// Before a font is named, and in the list groups that name their own, bytes have the code page of
// the default font.
const CodePage& Reader::Page() {
  const Destination destination = Top().destination;
  const bool in_bullet =
      destination == Destination::kListBefore || destination == Destination::kListAfter;
  if (in_bullet && bullet_.font_number() >= 0) return fonts_.PageOf(bullet_.font_number());
  return Top().page != nullptr ? *Top().page : fonts_.DefaultPage();
}

std::shared_ptr<const Field> Reader::CurrentField() {
  const Group& group = Top();
  if (group.field == nullptr || group.field->instruction.empty()) return nullptr;
  return group.field_serial == CurrentStory().paragraph_serial() ? group.field : nullptr;
}

bool IsRtf(std::string_view source) {
  if (source.starts_with("\xef\xbb\xbf")) source.remove_prefix(3);
  const std::size_t start = source.find_first_not_of(" \t\r\n");
  return start != std::string_view::npos && source.substr(start).starts_with("{\\rtf");
}

Document ReadRtf(std::string_view source) {
  if (IsRtf(source)) source.remove_prefix(source.find('{'));
  return Reader(source).Read();
}

}  // namespace tenora::richtext
