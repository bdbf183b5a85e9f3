#include "output/html_converter.h"

#include <algorithm>
#include <utility>

#include "output/html_characters.h"

namespace tenora::html {
namespace {

constexpr std::int32_t kLargestDefaultSize = 32767;

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
    if (!digits.starts_with('-'))
      read.default_font_size = std::min(ClampedNumber(digits), kLargestDefaultSize);
  }
  read.font_faces = !has("-FF");
  read.unicode_references = has("+U");
  read.text_entities = has("+E");
  return read;
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

std::string Converter::Convert(std::string_view body) {
  output_.reserve(body.size());
  Run(body);
  codes_.CloseAll(output_);
  return std::move(output_);
}

void Converter::Run(std::string_view source) {
  Tokenizer tokens(source);
  for (Token token; tokens.Next(token);) {
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

// Counts the braces, and leaves a group of which nothing is to be seen; true when it did.
bool Converter::SkipGroup(const Token& token, Tokenizer& tokens) {
  switch (token.kind) {
    case Token::Kind::kOpenGroup:
      if (skip_depth_ > 0) ++skip_depth_;
      unicode_.OpenGroup();
      return false;
    case Token::Kind::kCloseGroup:
      if (skip_depth_ > 0) --skip_depth_;
      unicode_.CloseGroup();
      return false;
    case Token::Kind::kControlWord:
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
    case Token::Kind::kOpenGroup:
      break;
    case Token::Kind::kCloseGroup:
      if (skip_depth_ == 0) EndGroup();
      break;
    case Token::Kind::kHexEscape:
      HandleHexEscape(token.text);
      break;
    case Token::Kind::kControlWord:
      HandleWord(token);
      break;
    case Token::Kind::kText:
    case Token::Kind::kCharacter:
      WriteText(token.text);
      break;
  }
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

// Blanks alone open and close nothing and go out at once, even ahead of a break that still waits.
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
