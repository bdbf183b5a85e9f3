#include <gtest/gtest.h>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/richtext_support.h"

namespace tenora {
namespace {

using richtext::Letter;

RichTextBox BoxOf(const std::string& body) {
  RichTextBox box;
  box.SetTextRTF(Letter(body));
  return box;
}

TEST(SetSelText, ReplacesTheSelection) {
  const struct {
    const char* body;
    int start, length;
    const char* put;
    const char* text;
    int caret;
  } kCases[] = {
      {"abc\\par def\\par", 1, 1, "X", "aXc\r\ndef", 2},
      {"abc\\par def\\par", 2, 3, "", "abef", 2},
      {"abc\\par def\\par", 7, 0, "!", "abc\r\ndef!", 8},
      {"abc\\par", 1, 0, "x\r\ny\nz", "ax\r\ny\r\nzbc", 6},
      {"abc\\par", 0, 99, "", "", 0},
      {"a\\u-10179?\\u-8704?b\\par", 3, 1, "c", "a😀c", 4},
      {"M\\u257?\\par", 2, 0, "{h}\\u", "Mā{h}\\u", 7},
      {"p\\par\\trowd\\cellx1\\cellx2\\pard\\intbl ab\\cell cd\\cell\\row\\pard q\\par", 3, 3, "X",
       "p\r\naX\td\r\nq", 4},
      {"", 0, 0, "<<Tenant Name>>", "<<Tenant Name>>", 15},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.body);
    RichTextBox box = BoxOf(c.body);
    box.Select(c.start, c.length);
    box.SetSelText(c.put);
    EXPECT_EQ(box.Text(), c.text);
    EXPECT_EQ(box.SelStart(), c.caret);
    EXPECT_EQ(box.SelLength(), 0);
    EXPECT_EQ(richtext::Canonical(box.TextRTF()), box.TextRTF());
  }
}

TEST(SetSelText, TakesTheFormatAtTheStart) {
  RichTextBox box = BoxOf("plain \\b bold\\b0  plain\\par");
  box.Select(8, 0);
  box.SetSelText("<<Mobile>>");
  EXPECT_NE(box.TextRTF().find("\\b bo<<Mobile>>ld\\b0"), std::string::npos) << box.TextRTF();
  box.Select(6, 4);
  box.SetSelText("X");
  EXPECT_NE(box.TextRTF().find("\\b XMobile>>ld\\b0"), std::string::npos) << box.TextRTF();
}

TEST(SetSelText, KeepsWhatItDoesNotTouch) {
  RichTextBox box = BoxOf(
      "a{\\*\\bkmkstart m}b{\\*\\bkmkend m} {\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt "
      "link}}{\\pict\\pngblip 8950} end\\par");
  box.Select(0, 1);
  box.SetSelText("longer ");
  EXPECT_NE(box.TextRTF().find("longer {\\*\\bkmkstart m}b{\\*\\bkmkend m} {\\field{\\*\\fldinst"
                               "{HYPERLINK \"x\"}}{\\fldrslt link}}{\\pict\\pngblip 8950} end"),
            std::string::npos)
      << box.TextRTF();
}

TEST(Find, SelectsWhatItFinds) {
  const struct {
    const char* body;
    const char* text;
    int start, end, options, found;
  } kCases[] = {
      {"One two TWO", "two", 0, -1, 0, 4},
      {"One two TWO", "two", 5, -1, 0, 8},
      {"One two TWO", "two", 5, -1, RichTextBox::kMatchCase, -1},
      {"twofold two", "two", 0, -1, RichTextBox::kWholeWord, 8},
      {"GR\\'d6SSE", "gr\xc3\xb6sse", 0, -1, 0, 0},
      {"\\u1044?\\u1040?", "да", 0, -1, 0, 0},
      {"one\\par two", "e\r\nt", 0, -1, 0, 2},
      {"one two", "two", 0, 6, 0, -1},
      {"one", "", 0, -1, 0, -1},
      {"one", "o", 9, -1, 0, -1},
      {"\\u-10179?\\u-8704?x", "x", 0, -1, 0, 2},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.body);
    RichTextBox box = BoxOf(c.body);
    EXPECT_EQ(box.Find(c.text, c.start, c.end, c.options), c.found);
    EXPECT_EQ(box.SelStart(), std::max(c.found, 0));
    EXPECT_EQ(box.SelLength() > 0, c.found >= 0);
  }
  RichTextBox box = BoxOf("one two");
  EXPECT_EQ(box.Find("two", 0, -1, RichTextBox::kNoHighlight), 4);
  EXPECT_EQ(box.SelLength(), 0);
}

}  // namespace
}  // namespace tenora
