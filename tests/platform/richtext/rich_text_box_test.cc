#include "platform/richtext/rich_text_box.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/richtext/richtext_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(RichTextBox, BeginsWithAnEmptyCanonicalDocument) {
  const RichTextBox box;
  EXPECT_EQ(box.TextRTF(),
            "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang5129{\\fonttbl{\\f0\\fnil\\fcharset0 "
            "Arial;}}\r\n\\viewkind4\\uc1\\pard\\f0\\fs24\\par\r\n}\r\n");
  EXPECT_EQ(box.Text(), "");
}

TEST(RichTextBox, KeepsTheSourceAsItStands) {
  RichTextBox box;
  const std::string source = "{\\rtf1\\ansi  {\\b odd}{\\b  source} }";
  box.SetTextRTF(source);
  EXPECT_EQ(box.TextRTF(), source);
  EXPECT_EQ(box.Text(), " odd source ");
}

TEST(RichTextBox, MergedTextReadsRightInEveryFont) {
  const std::string text = "Māhuta “quotes” € 😀 日 Ж";
  for (const char* font :
       {"\\fcharset0", "\\fcharset238", "\\fcharset204", "\\fcharset128", "\\fcharset1"}) {
    for (const char* page : {"1252", "1250", "932"}) {
      SCOPED_TRACE(std::string(font) + " " + page);
      RichTextBox box;
      box.SetTextRTF(std::string("{\\rtf1\\ansi\\ansicpg") + page + "\\deff0{\\fonttbl{\\f0" +
                     font + " Arial;}}\\uc1\\pard\\f0 <<Tenant Name>>\\par}");
      box.SetTextRTF(ReplaceAll(box.TextRTF(), "<<Tenant Name>>", box.SourceForm(text)));
      EXPECT_EQ(box.Text(), text);
      EXPECT_EQ(box.ShownForm(box.SourceForm(text)), text);
      EXPECT_EQ(richtext::TextOf(richtext::Canonical(box.TextRTF())), text);
    }
  }
}

TEST(RichTextBox, SourceFormEscapesOnlyWhatIsBeyondAscii) {
  RichTextBox box;
  EXPECT_EQ(box.SourceForm("a{\\b}"), "a{\\b}");
  EXPECT_EQ(box.SourceForm("Größe €"), "Gr\\'f6\\'dfe \\'80");
  EXPECT_EQ(box.SourceForm("ā😀"), "\\u257a\\u-10179?\\u-8704?");
  EXPECT_EQ(box.ShownForm("Gr\\'f6\\'dfe"), "Größe");
  box.SetTextRTF(
      "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset204 B;}"
      "{\\f2\\fcharset2 Symbol;}}x}");
  EXPECT_EQ(box.SourceForm("ö"), "\\u246\\'f6");
}

TEST(RichTextBox, EscapesUtf8InASource) {
  RichTextBox box;
  box.SetTextRTF("{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset0 A;}}Māhuta é}");
  EXPECT_EQ(box.TextRTF(), "{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset0 A;}}M\\u257ahuta \\'e9}");
  EXPECT_EQ(box.Text(), "Māhuta é");
}

TEST(RichTextBox, LoadsTextFilesOfEveryEncoding) {
  const test::ScratchFolder folder;
  const std::pair<std::string, std::string> kFiles[] = {
      {"Größe\r\nzwei\nlast", "Größe\r\nzwei\r\nlast"},
      {"\xef\xbb\xbfGröße", "Größe"},
      {std::string("\xff\xfeG\0r\0\xf6\0", 8), "Grö"},
      {std::string("\xfe\xff\0G\xd8\x3d\xde\0", 8), "G😀"},
      {"Gr\xf6\xdf"
       "e \x80",
       "Größe €"},
      {"{\\rtf1 as text}", "{\\rtf1 as text}"},
      {"", ""},
  };
  for (const auto& [bytes, text] : kFiles) {
    WriteWholeFile(folder / "letter.txt", bytes);
    RichTextBox box;
    box.LoadFile(folder / "letter.txt", RichTextBox::FileType::kText);
    EXPECT_EQ(box.Text(), text);
  }
}

TEST(RichTextBox, RefusesFilesThatAreNotRtfAndKeepsItsContent) {
  const test::ScratchFolder folder;
  RichTextBox box;
  box.SetText("kept");
  int changes = 0;
  box.OnChange([&] { ++changes; });
  for (const char* bytes : {"", "plain text", "PK\x03\x04", "{\\html x}"}) {
    WriteWholeFile(folder / "bad.rtf", bytes);
    EXPECT_THAT(test::ErrorOf([&] { box.LoadFile(folder / "bad.rtf"); }),
                AllOf(StartsWith("321 - "), HasSubstr("bad.rtf")));
  }
  EXPECT_THAT(test::ErrorOf([&] { box.LoadFile(folder / "none.rtf"); }),
              AllOf(StartsWith("53 - "), HasSubstr("none.rtf")));
  const auto huge = folder / "huge.rtf";
  WriteWholeFile(huge, "{\\rtf1");
  std::filesystem::resize_file(huge, std::uintmax_t{300} << 20);
  EXPECT_THAT(test::ErrorOf([&] { box.LoadFile(huge); }), HasSubstr("huge.rtf"));
  EXPECT_EQ(box.Text(), "kept");
  EXPECT_EQ(changes, 0);
}

TEST(RichTextBox, SavesWhatItHolds) {
  const test::ScratchFolder folder;
  RichTextBox box;
  int changes = 0;
  box.OnChange([&] { ++changes; });
  WriteWholeFile(folder / "a.rtf", "\xef\xbb\xbf{\\rtf1\\ansi <<Ten{\\lang2 ant} Name>>\\par é}");
  box.LoadFile(folder / "a.rtf");
  EXPECT_THAT(box.TextRTF(), HasSubstr("<<Tenant Name>>"));
  box.SaveFile(folder / "b.rtf");
  EXPECT_EQ(ReadWholeFile(folder / "b.rtf"), box.TextRTF());
  box.SaveFile(folder / "b.txt", RichTextBox::FileType::kText);
  EXPECT_EQ(ReadWholeFile(folder / "b.txt"), box.Text());
  EXPECT_EQ(changes, 1);
}

TEST(RichTextBox, ChangesTheMarginsOfSectionsThatHadTheFirstOnes) {
  RichTextBox box;
  box.SetTextRTF("{\\rtf1\\margl900\\margr900 a\\sect\\sectd b\\sect\\sectd\\marglsxn500 c}");
  box.SetMargins(700, 1440, 900, 100);
  EXPECT_THAT(box.TextRTF(),
              AllOf(HasSubstr("\\margl700\\margr900\\margt1440\\margb100"),
                    HasSubstr("\\marglsxn700\\margrsxn900\\margtsxn1440\\margbsxn100"),
                    HasSubstr("\\marglsxn500\\margrsxn900\\margtsxn1440\\margbsxn100")));
}

TEST(RichTextBox, TakesOtherTextForPlainText) {
  RichTextBox box;
  box.SetTextRTF("just {text}");
  EXPECT_EQ(box.Text(), "just {text}");
}

}  // namespace
}  // namespace tenora
