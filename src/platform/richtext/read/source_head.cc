#include "platform/richtext/source_head.h"

#include <algorithm>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {
SourceHead ReadHead(std::string_view source) {
  SourceHead head;
  const std::size_t table = source.find("{\\fonttbl");
  if (table == std::string_view::npos) return head;
  head.length = EndOfGroup(source, table + 1);
  CodePages code_pages;
  FontTable fonts(&code_pages);
  Tokenizer tokens(source.substr(0, head.length));
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    if (token.kind == Token::Kind::kClose) fonts.EndEntry();
    if (token.kind == Token::Kind::kText) {
      for (const char c : token.text) fonts.Byte(static_cast<unsigned char>(c));
    }
    if (token.kind != Token::Kind::kWord) continue;
    if (token.text == "ansicpg" && IsKnownCodePage(token.param) && token.param != kUtf8CodePage) {
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
