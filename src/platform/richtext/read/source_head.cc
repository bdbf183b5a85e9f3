#include "platform/richtext/source_head.h"

#include <algorithm>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {
namespace {

// End of the group that opens at `start`.
std::size_t GroupEnd(std::string_view source, std::size_t start) {
  Tokenizer tokens(source.substr(start));
  for (int depth = 0;;) {
    const Token token = tokens.Next();
    if (token.kind == Token::Kind::kEnd) return source.size();
    if (token.kind == Token::Kind::kOpen) ++depth;
    if (token.kind == Token::Kind::kClose && --depth == 0) return start + tokens.position();
  }
}

}  // namespace

SourceHead ReadHead(std::string_view source) {
  SourceHead head;
  const std::size_t table = source.find("{\\fonttbl");
  if (table == std::string_view::npos) return head;
  head.length = GroupEnd(source, table);
  CodePages code_pages;
  FontTable fonts(&code_pages);
  Tokenizer tokens(source.substr(0, head.length));
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    if (token.kind == Token::Kind::kClose) fonts.EndEntry();
    if (token.kind == Token::Kind::kText) {
      for (const char c : token.text) fonts.Byte(static_cast<unsigned char>(c));
    }
    if (token.kind != Token::Kind::kWord) continue;
    if (token.text == "ansicpg" && IsKnownCodePage(token.param)) {
      head.code_page = token.param;
      fonts.SetDocumentCodePage(token.param);
    }
    fonts.Word(token);
  }
  head.one_code_page = std::ranges::all_of(fonts.fonts(), [&](const Font& font) {
    const int page = CodePageOfCharset(font.charset, head.code_page);
    return page == head.code_page || page == kSymbolCodePage;
  });
  return head;
}

}  // namespace tenora::richtext
