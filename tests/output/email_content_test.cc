#include "output/email_content.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}"
    "{\\f1\\fswiss\\fcharset204 Arial;}}\r\n"
    "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n\\viewkind4\\uc1";

EmailBody BodyOf(const std::string& rtf) {
  RichTextBox box;
  box.SetTextRTF(kHead + rtf + "}");
  return MakeEmailBody(box);
}

TEST(EmailBody, KeepsEveryCharacterOfNamesAndPrices) {
  const struct {
    const char* rtf;
    const char* html;
  } cases[] = {
      {"\\pard M\\u257?huta\\par", "M&#257;huta"},
      {"\\pard J\\'e4ger \\'80 5 \\'93so\\'94\\par", "J&#228;ger &#8364; 5 &#8220;so&#8221;"},
      {"\\pard\\f1 \\'cc\\'e8\\'f0\\f0\\par", "&#1052;&#1080;&#1088;"},
      {"\\pard \\u-10179?\\u-8704?\\par", "&#128512;"},
      {"\\pard <b>Tom & Co</b>\\par", "&lt;b&gt;Tom &amp; Co&lt;/b&gt;"},
  };
  for (const auto& c : cases) EXPECT_THAT(BodyOf(c.rtf).body, HasSubstr(c.html)) << c.rtf;
}

TEST(EmailBody, FormatsLastOverParagraphsAndGroups) {
  const std::string html =
      BodyOf("\\pard\\f0\\fs24\\cf1\\b one\\par\r\n\\pard\\qc two\\par\r\n\\pard three\\b0\\par")
          .body;
  for (const char* word : {"one", "two", "three"}) {
    const std::size_t at = html.find(word);
    ASSERT_NE(at, std::string::npos) << html;
    const std::string before = html.substr(0, at);
    EXPECT_EQ(Split(before, "<b>").size(), Split(before, "</b>").size() + 1) << word;
    EXPECT_EQ(Split(before, "#FF0000").size() - 1, Split(before, "</font>").size()) << word;
  }
}

TEST(EmailBody, AlignedParagraphsLeaveNoGapsBehind) {
  const std::string html = BodyOf(
                               "\\pard\\qr one\\par\r\ntwo\\par\r\n\\pard three\\par\r\n\\pard\\qc "
                               "four\\par\r\n\\pard\\par "
                               "five\\par")
                               .body;
  EXPECT_THAT(html, HasSubstr(">one<br>\r\ntwo</td></tr></table>three<br>\r\n<table")) << html;
  EXPECT_THAT(html, HasSubstr("four</td></tr></table><br>\r\nfive")) << html;
}

TEST(EmailBody, TablesStayTables) {
  const std::string html = BodyOf(
                               "\\pard before\\par\r\n"
                               "\\trowd\\trgaph100\\clcbpat2\\cellx3000\\cellx12000\r\n"
                               "\\pard\\intbl\\b Rent\\b0\\cell\\pard\\intbl\\qr $5\\cell\\row\r\n"
                               "\\trowd\\trgaph100\\cellx6000\\cellx12000\r\n"
                               "\\pard\\intbl Bond\\cell\\pard\\intbl\\cell\\row\r\n"
                               "\\pard after\\par")
                               .body;
  const std::string flat = ReplaceAll(html, "\r\n", "");
  EXPECT_EQ(
      flat,
      "before<table width=\"100%\" cellspacing=\"0\" cellpadding=\"5\" style=\"margin:8px 0\">"
      "<tr><td width=\"25%\" bgcolor=\"#0000FF\"><b>Rent</b></td>"
      "<td width=\"75%\"><table width=100%><tr><td align=\"right\">$5</td></tr></table></td>"
      "</tr><tr><td width=\"50%\">Bond</td><td width=\"50%\">&nbsp;</td></tr></table>after");
}

TEST(EmailBody, PicturesBecomeInlinePartsInTheirPlaces) {
  const std::string png =
      "{\\pict\\pngblip\\picw1\\pich1\\picwgoal1500\\pichgoal750 89504e470d0a1a0a}";
  const std::string dib =
      "{\\pict\\dibitmap0\\picwgoal300\\pichgoal300 "
      "2800000001000000010000000100180000000000040000000000000000000000000000000000000000ff00ff}";
  const EmailBody body = BodyOf("\\pard one " + png + " two " + dib + " three\\par");
  ASSERT_EQ(body.pictures.size(), 2U);
  EXPECT_EQ(body.pictures[0].content_type, "image/png");
  EXPECT_EQ(body.pictures[0].bytes, "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(body.pictures[1].content_type, "image/bmp");
  EXPECT_TRUE(body.pictures[1].bytes.starts_with("BM"));
  EXPECT_THAT(body.body,
              testing::MatchesRegex("one <img src=\"cid:picture1[^\"]*\" alt=\"\" width=\"100\" "
                                    "height=\"50\"> two <img src=\"cid:picture2[^>]*> three"));
  EXPECT_EQ(body.plain_text, "one  two  three");
  for (const mail::Part& picture : body.pictures) {
    EXPECT_THAT(picture.content_id, testing::MatchesRegex("picture[12]\\.[0-9a-f]{16}@tenora"));
    EXPECT_THAT(body.body, HasSubstr("\"cid:" + picture.content_id + "\""));
  }
}

TEST(EmailBody, ShowsNoMoreAndNoLessThanPaperDoes) {
  const EmailBody body = BodyOf(
      "{\\header\\pard Letterhead\\par}{\\footer Page 1\\par}\\pard Dear{\\v  secret} Ann"
      "{\\deleted  or not}\\line 12 Elm St\\line Napier{\\footnote a note}\\page Rent\\par\r\n"
      "\\trowd\\cellx3000\\pard\\intbl a\\line b{\\v  secret}\\cell\\row\\pard "
      "{\\shp{\\*\\shpinst{\\shptxt A box\\par}}{\\shprslt old}}\\par");
  EXPECT_THAT(body.body,
              testing::StartsWith("Dear Ann<br>\r\n12 Elm St<br>\r\nNapier<br>\r\nRent\r\n<table"));
  EXPECT_THAT(body.body, testing::AllOf(HasSubstr("a<br>\r\nb</td>"), HasSubstr("A box")));
  EXPECT_THAT(body.plain_text, testing::StartsWith("Dear Ann\r\n12 Elm St\r\nNapier\r\nRent\r\n"));
  for (const std::string& text : {body.body, body.plain_text}) {
    for (const char* unseen : {"secret", "or not", "Letterhead", "Page 1", "old"}) {
      EXPECT_THAT(text, Not(HasSubstr(unseen)));
    }
  }
}

TEST(EmailBody, SurvivesWhatIsNoCanonicalLetter) {
  for (const char* rtf :
       {"", "{", "}", "\\cell\\row\\trowd", "\\trowd\\cellx99\\cell", "{\\pict zz",
        "\\trowd\\cellx1 a\\nestcell{\\*\\nesttableprops\\nestrow}b\\cell\\row"}) {
    const EmailBody body = BodyOf(rtf);
    const auto count = [&](std::string_view part) { return Split(body.body, part).size(); };
    EXPECT_EQ(count("<table"), count("</table>")) << rtf;
    EXPECT_EQ(count("<td"), count("</td>")) << rtf;
  }
}

TEST(EmailBody, TheAgencysTemplatesNest) {
  const auto folder = test::SourceDir() / "examples/agency/Templates";
  int letters = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    RichTextBox box;
    box.LoadFile(entry.path());
    const test::ScratchFolder scratch;
    const std::string html = MakeEmailBody(box).body;
    EXPECT_THAT(html, HasSubstr("K&#333;whai &amp; Harbour"));
    EXPECT_THAT(html, Not(HasSubstr("&#57344;")));
    const test::ProcessResult checked = test::RunProcess(
        {"/usr/bin/python3", (test::SourceDir() / "tests/output/check_nesting.py").string()}, {},
        html);
    EXPECT_EQ(checked.status, 0) << entry.path() << ": " << checked.errors;
    ++letters;
  }
  EXPECT_GE(letters, 6);
}

}  // namespace
}  // namespace tenora
