#include "platform/richtext/characters/code_page.h"

#include <gtest/gtest.h>

#include "platform/richtext/richtext_support.h"

namespace tenora::richtext {
namespace {

std::string Document(const std::string& head, const std::string& font, const std::string& text) {
  return "{\\rtf1" + head + "{\\fonttbl{\\f0" + font + " Arial;}{\\f1\\fcharset2 Symbol;}}\\f0 " +
         text + "}";
}

TEST(CodePages, ReadBytesByDocumentAndFont) {
  const struct {
    const char* head;
    const char* font;
    const char* text;
    const char* shown;
  } kCases[] = {
      {"\\ansi\\ansicpg1252", "\\fcharset0", "M\\'e4rz \\'80\\'93\\'94", "März €“”"},
      {"\\ansi\\ansicpg1250", "", "\\'b9\\'e6\\'ea", "ąćę"},
      {"\\ansi\\ansicpg1252", "\\fcharset238", "\\'b9\\'e6\\'ea", "ąćę"},
      {"\\ansi\\ansicpg1252", "\\fcharset204", "\\'c4\\'e0", "Да"},
      {"\\ansi\\ansicpg1251", "\\fcharset1", "\\'c4\\'e0", "Да"},
      {"\\ansi\\ansicpg1252", "\\fcharset128", "\\'93\\'fa\\'96\\'7b\\'83e", "日本テ"},
      {"\\ansi\\ansicpg932", "", "\\'93\\'fa\\'83\\\\x", "日ソx"},
      {"\\ansi", "\\fcharset134", "\\'d6\\'d0\\'b9\\'fa", "中国"},
      {"\\ansi", "\\fcharset136", "\\'a4\\'a4", "中"},
      {"\\ansi", "\\fcharset129", "\\'c7\\'d1", "한"},
      {"\\ansi\\ansicpg65001", "", "\\'c3\\'a9 \xe2\x82\xac \\'f0\\'9f\\'98\\'80", "é € 😀"},
      // No UTF-8: read as 1252.
      {"\\ansi\\ansicpg65001", "", "\\'e9t\\'e9 \\'e2\\'82x", "été â‚x"},
      {"\\ansi\\ansicpg65001", "", "\\'ed\\'a0\\'80\\'c0\\'af", "\ufffdÀ¯"},
      {"\\mac", "", "\\'8e\\'d2", "é“"},
      {"\\mac", "\\fcharset78", "\\'93\\'fa\\'96\\'7b", "日本"},
      {"\\mac\\ansicpg10001", "\\fcharset1", "\\'93\\'fa", "日"},
      {"\\ansi", "\\fcharset89", "\\'84\\'e0", "Да"},
      {"\\pc", "", "\\'82", "é"},
      {"\\pca", "", "\\'9b", "ø"},
      {"\\ansi", "\\cpg852", "\\'a5", "ą"},
      {"\\ansi", "", "\\f1\\'b7", "\xef\x82\xb7"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const std::string source = Document(c.head, c.font, c.text);
    EXPECT_EQ(TextOf(source), c.shown);
    EXPECT_EQ(TextOf(Canonical(source)), TextOf(source));
    EXPECT_EQ(Canonical(Canonical(source)), Canonical(source));
  }
}

TEST(CodePages, ReadUnicodeEscapesAndSkipTheirFallback) {
  const struct {
    const char* text;
    const char* shown;
  } kCases[] = {
      {"M\\u257 ahuta", "Māhuta"},
      {"M\\u257\\'61huta", "Māhuta"},
      {"\\uc2\\u26085\\'93\\'fax", "日x"},
      {"\\uc0\\u257 huta", "āhuta"},
      {"{\\uc3\\u257 abc}\\u257?d", "āād"},
      {"\\u-10179?\\u-8704?", "😀"},
      {"\\uc0\\u55357\\uc1 \\u56832\\'3f", "😀"},
      {"\\u-10179?x", "\xef\xbf\xbdx"},
      {"\\u8226\\bullet x", "•x"},
      {"\\u257{x}", "āx"},
      {"a{\\upr{ansi}{\\*\\ud{uni\\u257?}}}z", "auniāz"},
      {"\\u-3999?", "\xef\x81\xa1"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const std::string source = Document("\\ansi", "\\fcharset0", c.text);
    EXPECT_EQ(TextOf(source), c.shown);
    EXPECT_EQ(TextOf(Canonical(source)), TextOf(source));
  }
}

TEST(CodePages, WriteBytesWhereTheFontHasTheCharacter) {
  EXPECT_NE(Canonical(Document("\\ansi", "\\fcharset238", "\\u261?\\u233?\\u257?"))
                .find("\\'b9\\'e9\\u257a"),
            std::string::npos);
  EXPECT_NE(Canonical(Document("\\ansi", "\\fcharset128", "\\u26085?")).find("\\'93\\'fa"),
            std::string::npos);
  EXPECT_NE(Canonical(Document("\\ansi", "\\fcharset0", "\\u26085?\\u-10179?\\u-8704?"))
                .find("\\u26085?\\u-10179?\\u-8704?"),
            std::string::npos);
}

TEST(CodePages, EveryByteOfASingleByteSetComesBack) {
  for (const int page : {874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258, 10000, 437}) {
    const CodePage code_page(page);
    for (unsigned byte = 0x80; byte < 256; ++byte) {
      const char32_t character = code_page.Decode(static_cast<unsigned char>(byte));
      if (character == 0xfffd) continue;
      EXPECT_EQ(code_page.Encode(character), std::string(1, static_cast<char>(byte)))
          << page << " " << byte;
    }
  }
}

}  // namespace
}  // namespace tenora::richtext
