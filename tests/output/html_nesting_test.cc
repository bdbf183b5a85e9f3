// Whatever a letter's formatting does, the tags nest and the text arrives; read back by a checker
// of our own and by Python's HTML parser.
#include "support/html_nesting.h"

#include <gtest/gtest.h>

#include <random>

#include "output/rtf_to_html.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora {
namespace {

struct Letter {
  std::string rtf;
  std::string words;  // its text without white space
};

// Control words in any order, words of text between them.
Letter RandomLetter(std::mt19937& random) {
  static constexpr const char* kPieces[] = {
      "\\b ",          "\\b0 ",       "\\i ",
      "\\i0 ",         "\\ul ",       "\\ulnone ",
      "\\strike ",     "\\super ",    "\\sub ",
      "\\nosupersub ", "\\cf1 ",      "\\cf2 ",
      "\\cf0 ",        "\\fs20 ",     "\\f1 ",
      "\\par\r\n",     "\\pard ",     "\\plain ",
      "\\qc ",         "\\qr ",       "\\bullet ",
      "\\pnlvlblt ",   "{",           "}",
      "\\tab ",        "   ",         "\\'B7",
      "{\\*\\x y}",    "{\\pict 00}", "{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\'B7}}"};
  Letter letter;
  letter.rtf =
      "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}{\\f1 Symbol;}}"
      "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n";
  if (random() % 4 == 0) letter.rtf += "{\\*\\listtable{\\list\\listid1}}";
  for (int piece = 0; piece < 200; ++piece) {
    if (random() % 3 != 0) {
      letter.rtf += kPieces[random() % std::size(kPieces)];
      continue;
    }
    const std::string word = "w" + std::to_string(piece);
    letter.rtf += word;
    letter.words += word;
  }
  letter.rtf += "}";
  return letter;
}

std::string ReadWithPython(const std::vector<std::string>& fragments) {
  const test::ScratchFolder scratch;
  std::vector<std::string> arguments = {"python3", HTML_READER};
  for (std::size_t i = 0; i < fragments.size(); ++i) {
    const auto file = scratch / (std::to_string(i) + ".html");
    WriteWholeFile(file, fragments[i]);
    arguments.push_back(file);
  }
  const test::ProcessResult result = test::RunProcess(arguments);
  EXPECT_EQ(result.status, 0) << result.errors;
  return result.output;
}

TEST(HtmlNesting, HoldsForAnyOrderOfControlWordsAndLosesNoText) {
  std::mt19937 random(20261121);
  std::vector<std::string> fragments;
  std::string expected;
  for (int i = 0; i < 500; ++i) {
    const Letter letter = RandomLetter(random);
    fragments.push_back(RtfToHtml(letter.rtf, "+U+E"));
    expected += letter.words + "\n";
    ASSERT_EQ(test::NestingFault(fragments.back()), "") << letter.rtf << "\n" << fragments.back();
  }
  EXPECT_EQ(ReadWithPython(fragments), expected);
}

// The Latin-1 half of the code page, read back by a parser that knows the entities by itself.
TEST(HtmlCharacters, ComeBackAsThemselves) {
  std::string rtf = "{\\rtf1 ";
  std::string expected;
  for (int code = 0xA1; code <= 0xFF; ++code) {
    const std::string digits = {"0123456789abcdef"[code / 16], "0123456789abcdef"[code % 16]};
    if (code == 0xAE || code == 0xE4) continue;  // dropped; the trade mark
    rtf += "\\'" + digits;
    AppendUtf8(expected, static_cast<char32_t>(code));
  }
  EXPECT_EQ(ReadWithPython({RtfToHtml(rtf + "}", "")}), expected + "\n");
}

// Each of these once took, or would take, time in the square of its length.
TEST(HtmlConversion, StaysLinearOnHostileLetters) {
  constexpr int kRepeats = 150'000;
  for (const char* piece : {"{", "}", "\\", "{\\*", "{\\pntext", "\\par", "\\'99", "\\u-10179?",
                            "{\\uc0", "\\info", "\\\\info", "{\\colortbl", "\\cf1", "\\b\\b0",
                            "{\\fonttbl{\\f1 a;}", "\\qc x\\pard", "\\bin1", "{\\pict\\bin"}) {
    std::string rtf = "{\\rtf1{\\colortbl;\\red1;}";
    for (int i = 0; i < kRepeats; ++i) rtf += piece;
    EXPECT_EQ(test::NestingFault(RtfToHtml(rtf, "+U+E")), "") << piece;
  }
}

}  // namespace
}  // namespace tenora
