#include <gtest/gtest.h>

#include <random>

#include "platform/richtext/richtext_support.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

std::string Repeat(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(RtfReader, ReadsAnyBytes) {
  const std::string kCases[] = {
      "",
      "{",
      "}",
      "\\",
      "{\\rtf1",
      "{\\rtf1\\'",
      "{\\rtf1\\'4",
      "{\\rtf1 a}}}} b",
      "{\\rtf1\\bin99999999999999 abc}",
      "{\\rtf1\\bin-5 abc}",
      "{\\rtf1{\\pict\\pngblip\\bin1000000000 abc",
      "{\\rtf1\\fs99999999999999999999\\li-99999999999999999\\u99999999999 x}",
      "{\\rtf1\\fs-1\\up-99999999\\f999999\\cf-3 x}",
      std::string("{\\rtf1 a\0b\0\\par\0}", 17),
      "{\\rtf1\\row\\cell\\row\\nestcell\\nestrow\\nestrow x}",
      "{\\rtf1\\trowd\\cellx1\\cellx2\\pard\\intbl a\\cell\\row}",
      "{\\rtf1\\pard\\intbl\\itap9 a\\nestcell\\cell b\\row}",
      "{\\rtf1\\pard\\intbl a\\cell b\\cell c\\par d}",
      "{\\rtf1{\\header{\\header{\\footnote{\\shp{\\shptxt x",
      "{\\rtf1{\\field{\\fldrslt x}{\\fldinst y}}{\\field}{\\fldrslt z}}",
      "{\\rtf1{\\stylesheet{\\s1\\sbasedon2;}{\\s2\\sbasedon1 B;}}\\s1 x}",
      "{\\rtf1{\\*\\listtable{\\list{\\listlevel{\\leveltext;}}}}\\ls0\\ilvl8 x\\par}",
      "{\\rtf1{\\colortbl\\red999\\green-1;}{\\fonttbl}\\cf0 x}",
      "{\\rtf1{\\upr{\\upr{\\upr a}{\\*\\ud b}}}}",
      "\xef\xbb\xbf {\\rtf1 x}",
      // The default font is neither the first nor one for text; lists and fields in a header use
      // it.
      "{\\rtf1\\deff1{\\fonttbl{\\f0 A;}{\\f1\\fcharset2 "
      "Symbol;}}{\\header{\\*\\pn\\pndec}a\\par\\pard"
      "{\\field{\\*\\fldinst X}{\\fldrslt b}}}{\\*\\pn\\pnlvlblt{\\pntxtb "
      "\\u8226?\\u8226?}}c\\par}",
      // Written before the font table is known: a number and a field in a header.
      "{\\rtf1{\\header{\\*\\pn}a\\par\\pard{\\field{\\*\\fldinst X}{\\fldrslt b}}}{\\fonttbl{\\f0 "
      "S;}}x}",
      "{\\rtf1{\\fonttbl{\\f0 A;}{\\f1 B;}}{\\header{\\*\\pn}a\\par}\\deff1 x}",
      "{\\rtf1{\\fonttbl{\\f2 symbol;}}{\\pn\\pnlvlblt}}",
      "{\\rtf1\\trowd\\cellx99999\\intbl a\\cell b\\cell c\\cell\\row}",
      "{\\rtf1{\\shp{\\lang1}{\\lang1\\pntext a}{\\u255 y}{\\bin0 }b}}",
      "{\\rtf1{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7" + std::string(100, ':') + "}}c\\par}",
      "{\\rtf1{\\fonttbl{\\f0\\'95a\\u257?b;}}x}",
      Repeat("{", 100000),
      "{\\rtf1" + Repeat("{\\b ", 50000) + "deep" + Repeat("}", 50000) + "\\b0  after}",
      "{\\rtf1" + Repeat("{\\field{\\*\\fldinst X}{\\fldrslt ", 500) + "deep",
      "{\\rtf1" + Repeat("{\\shp{\\shptxt ", 500) + "deep",
      "{\\rtf1" + Repeat("\\itap1\\intbl\\itap15 ", 500) + "x\\nestcell\\cell\\row}",
      "{\\rtf1" + Repeat("\\tx1", 10000) + " x}",
      "{\\rtf1{\\fonttbl{\\f0 " + std::string(100000, 'x') + ";}}x}",
  };
  for (const std::string& source : kCases) {
    SCOPED_TRACE(source.substr(0, 60));
    const std::string once = Canonical(source);
    EXPECT_EQ(Canonical(once), once);
    EXPECT_EQ(TextOf(once), TextOf(source));
    EXPECT_TRUE(IsValidUtf8(TextOf(source)));
  }
}

TEST(RtfReader, KeepsTheTextOfADeepGroup) {
  EXPECT_EQ(TextOf("{\\rtf1" + Repeat("{", 50000) + "deep" + Repeat("}", 50000) + " after}"),
            "deep after");
  EXPECT_EQ(TextOf("{\\rtf1" + Repeat("{", 5000) + "{\\*\\htmltag {<b>}}deep{\\*\\generator x;}" +
                   Repeat("}", 5000) + " after}"),
            "deep after");
}

TEST(RtfReader, KeepsTheParagraphsBehindANote) {
  const Document letter =
      ReadRtf("{\\rtf1{\\footnote note}" + Repeat("text\\par ", 10000) + "end}");
  EXPECT_EQ(letter.blocks.size(), 10001U);
}

TEST(RtfReader, ShowsOnlyTheResultsOfFieldsInFieldsInFields) {
  const std::string deep = "{\\rtf1 " + Repeat("{\\field{\\*\\fldinst PAGE}{\\fldrslt ", 40) +
                           "text" + Repeat("}}", 40) + "}";
  EXPECT_EQ(TextOf(deep), "text");
}

TEST(RtfReader, ReadsDamagedLetters) {
  const std::string letter = Letter(
      "\\b <<Tenant Name>>\\b0\\par{\\footnote note}{\\field{\\*\\fldinst{PAGE}}{\\fldrslt "
      "1}}\\trowd\\cellx900\\cellx1800\\pard\\intbl a\\cell\\itap2 n\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx90\\nestrow}\\pard\\intbl\\cell\\row\\pard "
      "M\\u257?\\'e9{\\*\\bkmkstart x}{\\pict\\pngblip 8950}\\par");
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::string damaged = letter.substr(0, i % 3 == 0 ? random() % letter.size() : letter.size());
    for (unsigned n = random() % 4; n > 0 && !damaged.empty(); --n)
      damaged[random() % damaged.size()] = "{}\\;'0ab \x80\xff"[random() % 11];
    const std::string once = Canonical(damaged);
    ASSERT_EQ(Canonical(once), once) << damaged;
    ASSERT_EQ(TextOf(once), TextOf(damaged)) << damaged;
  }
}

}  // namespace
}  // namespace tenora::richtext
