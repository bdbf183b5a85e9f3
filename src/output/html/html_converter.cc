#include "output/html/html_converter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "output/html/html_characters.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

constexpr std::int32_t kLargestDefaultSize = 32767;
// One above HTML's own largest size; deliberate.
constexpr std::int32_t kLargestSize = 8;
constexpr std::int32_t kHalfPointsPerSize = 7;

template <typename Entries>
auto FindAction(const Entries& entries, std::string_view name) {
  const auto* entry =
      std::ranges::lower_bound(entries, name, {}, [](const auto& e) { return e.name; });
  const bool found = entry != std::end(entries) && entry->name == name;
  return found ? entry->action : nullptr;
}

// The number at the start of a text, 0 for none.
std::int32_t DefaultSize(std::string_view text) {
  std::int32_t size = 0;
  for (const char c : text) {
    if (!IsDigit(c)) break;
    size = std::min(size * 10 + (c - '0'), kLargestDefaultSize);
  }
  return size;
}

}  // namespace

Options ReadOptions(std::string_view options) {
  const auto has = [options](std::string_view name) {
    return options.find(name) != std::string_view::npos;
  };
  Options read;
  if (has("+CR")) read.line_terminator = "\r\n";
  constexpr std::string_view kDefaultSize = "+F=";
  if (const std::size_t at = options.find(kDefaultSize); at != std::string_view::npos) {
    const std::string_view digits = options.substr(at + kDefaultSize.size());
    read.default_font_size = DefaultSize(digits);
  }
  read.font_faces = !has("-FF");
  read.unicode_references = has("+U");
  read.text_entities = has("+E");
  return read;
}

std::string Converter::Convert(std::string_view body) {
  output_.reserve(body.size());
  Run(body);
  codes_.CloseAll(output_);
  return std::move(output_);
}

void Converter::Run(std::string_view source) {
  Tokenizer tokens(source, Tokenizer::Form::kLiteral);
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    if (SkipGroup(token, tokens)) continue;
    if (options_.unicode_references && unicode_.SkipFallback(token)) continue;
    if (token.kind == Token::Kind::kText &&
        token.text.find_first_not_of("\r\n") == std::string_view::npos)
      continue;
    if (skip_next_ > 0) {
      --skip_next_;
      continue;
    }
    Handle(token);
  }
}

// Counts the braces and skips groups that are not shown; true when it skipped one.
bool Converter::SkipGroup(const Token& token, Tokenizer& tokens) {
  switch (token.kind) {
    case Token::Kind::kOpen:
      if (skip_depth_ > 0) ++skip_depth_;
      unicode_.OpenGroup();
      return false;
    case Token::Kind::kClose:
      if (skip_depth_ > 0) --skip_depth_;
      unicode_.CloseGroup();
      return false;
    case Token::Kind::kWord:
    case Token::Kind::kSymbol:
      break;
    default:
      return false;
  }
  if (token.text == "pntext" && skip_depth_ == 0) skip_depth_ = 1;
  if (token.text != "pict" && token.text != "*") return false;
  tokens.LeaveGroup();
  if (skip_depth_ > 0) --skip_depth_;
  unicode_.CloseGroup();
  return true;
}

void Converter::Handle(const Token& token) {
  switch (token.kind) {
    case Token::Kind::kOpen:
      break;
    case Token::Kind::kClose:
      if (skip_depth_ == 0) EndGroup();
      break;
    case Token::Kind::kByte:
      HandleHexEscape(token.text);
      break;
    case Token::Kind::kWord:
      HandleWord(token);
      break;
    case Token::Kind::kText:
      WriteText(token.text);
      break;
    case Token::Kind::kSymbol:
      if (token.IsEscapedCharacter()) WriteText(token.text);
      break;
    case Token::Kind::kBinary:
    case Token::Kind::kEnd:
      break;
  }
}

// Every word that is in neither table is dropped: indents, languages, list numbers, \line too.
void Converter::HandleWord(const Token& token) {
  struct Plain {
    std::string_view name;
    void (*action)(Converter&);
  };
  static constexpr Plain kPlainWords[] = {
      {"b", [](Converter& c) { c.codes_.Open(Tag::kBold); }},
      {"bullet",
       [](Converter& c) {
         c.codes_.Close(Tag::kListItem);
         c.codes_.Open(Tag::kListItem);
       }},
      {"i", [](Converter& c) { c.codes_.Open(Tag::kItalic); }},
      {"nosupersub",
       [](Converter& c) {
         c.codes_.Close(Tag::kSub);
         c.codes_.Close(Tag::kSuper);
       }},
      {"par", [](Converter& c) { c.EndParagraph(); }},
      {"pard", [](Converter& c) { c.ResetParagraph(); }},
      {"plain", [](Converter& c) { c.EndGroup(); }},
      {"pnlvlblt", [](Converter& c) { c.codes_.Open(Tag::kListItem); }},
      {"pntext", [](Converter& c) { c.StartListItem(); }},
      {"pntxta", [](Converter& c) { c.skip_next_ = 1; }},
      {"pntxtb", [](Converter& c) { c.skip_next_ = 1; }},
      {"qc", [](Converter& c) { c.Align("center"); }},
      {"qr", [](Converter& c) { c.Align("right"); }},
      {"strike", [](Converter& c) { c.codes_.Open(Tag::kStrike); }},
      {"sub", [](Converter& c) { c.codes_.Open(Tag::kSub); }},
      {"super", [](Converter& c) { c.codes_.Open(Tag::kSuper); }},
      {"tab", [](Converter& c) { c.WriteHtml("\t"); }},
      {"ul", [](Converter& c) { c.codes_.Open(Tag::kUnderline); }},
      {"ulnone", [](Converter& c) { c.codes_.Close(Tag::kUnderline); }},
  };
  struct Numbered {
    std::string_view name;
    void (*action)(Converter&, std::int32_t);
  };
  static constexpr auto kCloseAtZero = [](Converter& c, Tag tag, std::int32_t number) {
    if (number == 0) c.codes_.Close(tag);
  };
  static constexpr Numbered kNumberedWords[] = {
      {"b", [](Converter& c, std::int32_t n) { kCloseAtZero(c, Tag::kBold, n); }},
      {"cf", [](Converter& c, std::int32_t n) { c.SetColour(n); }},
      {"f", [](Converter& c, std::int32_t n) { c.SetFace(n); }},
      {"fs", [](Converter& c, std::int32_t n) { c.SetSize(n); }},
      {"i", [](Converter& c, std::int32_t n) { kCloseAtZero(c, Tag::kItalic, n); }},
      {"strike", [](Converter& c, std::int32_t n) { kCloseAtZero(c, Tag::kStrike, n); }},
      {"u", [](Converter& c, std::int32_t n) { c.WriteUnicode(n); }},
      {"uc", [](Converter& c, std::int32_t n) { c.unicode_.SetFallbackLength(n); }},
  };
  static_assert(std::ranges::is_sorted(kPlainWords, {}, &Plain::name));
  static_assert(std::ranges::is_sorted(kNumberedWords, {}, &Numbered::name));

  if (token.has_param) {
    if (const auto action = FindAction(kNumberedWords, token.text)) action(*this, token.param);
  } else {
    if (const auto action = FindAction(kPlainWords, token.text)) action(*this);
  }
}

// Deliberately cancels the formatting from outside the group too; only a list item goes on.
void Converter::EndGroup() {
  codes_.EndGroup();
  colour_ = face_ = {};
  size_ = 0;
  wrapper_.clear();
}

void Converter::EndParagraph() {
  if (codes_.IsInForce(Tag::kListItem) || codes_.IsPending(Tag::kListItem)) {
    codes_.Close(Tag::kListItem);
  } else {
    ++pending_breaks_;
  }
  at_line_start_ = at_paragraph_start_ = true;
}

// Deliberately cancels character formatting too.
void Converter::ResetParagraph() {
  if (!output_.empty() && pending_breaks_ == 0) WriteBreak("<Br>");
  codes_.ResetParagraph();
  // A pending list item was requested by this paragraph's list text, which may reset the
  // paragraph itself.
  if (!head_.is_list_document && codes_.IsInForce(Tag::kListItem)) codes_.Close(Tag::kListItem);
  wrapper_.clear();
  at_paragraph_start_ = true;
}

// The one word that writes a font tag, deliberately: face, size and \cf0 take effect with it.
void Converter::SetColour(std::int32_t number) {
  if (number == 0) {
    colour_ = {};
    return;
  }
  const std::string_view colour = head_.colours.Find(number);
  if (colour.empty()) return;
  colour_ = colour;
  codes_.Reopen(Tag::kFont, FontString());
}

void Converter::SetSize(std::int32_t half_points) {
  size_ = std::clamp(half_points / kHalfPointsPerSize, 1, kLargestSize);
  if (size_ == options_.default_font_size) size_ = 0;
}

void Converter::SetFace(std::int32_t number) {
  if (!options_.font_faces) return;
  if (const std::string* face = head_.fonts.Find(number)) face_ = *face;
}

std::string Converter::FontString() const {
  std::string tag = "<font";
  if (!face_.empty()) tag.append(" face=\"").append(face_).append("\"");
  if (!colour_.empty()) tag.append(" color=\"#").append(colour_).append("\"");
  if (size_ != 0) tag.append(" size=").append(std::to_string(size_));
  return tag + ">";
}

// Inside an aligned paragraph another alignment waits for the next paragraph's first text.
void Converter::Align(std::string_view alignment) {
  wrapper_ = "<table width=100%><tr><td align=\"";
  wrapper_.append(alignment).append("\">");
  if (!codes_.IsInForce(Tag::kWrapper)) codes_.Reopen(Tag::kWrapper, wrapper_);
}

// The alignment wrapper is left alone: it holds for this item as for the one before.
void Converter::StartListItem() {
  if (codes_.IsPending(Tag::kListItem)) return;
  codes_.Close(Tag::kListItem);
  codes_.Open(Tag::kListItem);
}

void Converter::WriteUnicode(std::int32_t number) {
  if (!options_.unicode_references) return;
  const std::string reference = unicode_.Reference(number);
  if (!reference.empty()) WriteHtml(reference);
}

void Converter::HandleHexEscape(std::string_view digits) {
  std::string_view character = EscapedCharacter(digits);
  if (character.empty()) return;
  if (character.starts_with(kRtfFragment)) {
    character.remove_prefix(kRtfFragment.size());
    Run(character);
  } else {
    WriteHtml(character);
  }
}

void Converter::WriteText(std::string_view text) {
  if (text.find_first_not_of(" \r\n") == std::string_view::npos) return WriteBlanks(text);
  FlushCodes();
  AppendText(output_, text, options_.text_entities);
  at_line_start_ = false;
}

// Blanks alone open and close no tags and are written at once, even before a pending break.
// At the start of a line they are the indentation, which HTML would swallow.
void Converter::WriteBlanks(std::string_view blanks) {
  for (const char blank : blanks) {
    if (blank == ' ') output_ += at_line_start_ ? "&nbsp;" : " ";
  }
  at_line_start_ = false;
}

void Converter::WriteHtml(std::string_view html) {
  FlushCodes();
  output_ += html;
  at_line_start_ = false;
}

void Converter::FlushCodes() {
  if (at_paragraph_start_ && !wrapper_.empty() && codes_.BeginOf(Tag::kWrapper) != wrapper_)
    codes_.Reopen(Tag::kWrapper, wrapper_);
  at_paragraph_start_ = false;
  opening_.clear();
  codes_.Flush(output_, opening_);
  for (; pending_breaks_ > 0; --pending_breaks_) WriteBreak("<br>");
  output_ += opening_;
}

void Converter::WriteBreak(std::string_view tag) {
  output_ += tag;
  output_ += options_.line_terminator;
}

}  // namespace tenora::html
