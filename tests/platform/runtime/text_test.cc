#include "platform/runtime/text.h"

#include <gtest/gtest.h>

namespace tenora {
namespace {

TEST(Text, FindsAndReplaces) {
  EXPECT_EQ(FindNoCase("xx printRECEIPT", "PrintReceipt"), 3U);
  EXPECT_EQ(FindNoCase("abc", "abcd"), std::string_view::npos);
  EXPECT_EQ(ReplaceAll("aXaXa", "X", "XX"), "aXXaXXa");
  EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
  EXPECT_EQ(ReplaceAllNoCase("A\\Property.MDB", "\\property.mdb", ""), "A");
  EXPECT_EQ(TrimBlanks("  \tx  "), "\tx");
  EXPECT_EQ(Split("a;;b;", ";"), (std::vector<std::string>{"a", "", "b", ""}));
}

TEST(Text, ConvertsUnicodeBothWays) {
  const std::string text = "Māhuta € 😀";
  EXPECT_EQ(FromUtf16(ToUtf16(text)), text);
  EXPECT_EQ(ToUtf16("😀").size(), 2U);
  EXPECT_EQ(FromUtf16(std::u16string(1, char16_t{0xD800})), "\xEF\xBF\xBD");
}

TEST(Text, ReadsBrokenUtf8WithoutGoingAstray) {
  for (const char* text : {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC0\x80", "\xED\xA0\x80", "\xFF",
                           "\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80"}) {
    EXPECT_FALSE(IsValidUtf8(text));
    std::string_view rest = text;
    EXPECT_EQ(TakeCodePoint(rest), U'\xFFFD');
    EXPECT_EQ(rest.size(), std::string_view(text).size() - 1);
  }
  EXPECT_TRUE(IsValidUtf8("\xEF\xBF\xBD ok"));
}

}  // namespace
}  // namespace tenora
