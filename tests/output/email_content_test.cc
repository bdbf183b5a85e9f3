#include "output/email_content.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/document_html_check.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::HasSubstr;

constexpr const char* kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}"
    "{\\f1\\fswiss\\fcharset204 Arial;}}\r\n"
    "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n\\viewkind4\\uc1";

EmailBody BodyOf(const std::string& rtf) {
  RichTextBox box;
  box.SetTextRTF(kHead + rtf + "}");
  return MakeEmailBody(box);
}

TEST(EmailBody, PicturesBecomeInlinePartsInTheirPlaces) {
  const std::string png =
      "{\\pict\\pngblip\\picw1\\pich1\\picwgoal1500\\pichgoal750 89504e470d0a1a0a}";
  const std::string bitmap =
      "2800000001000000010000000100180000000000040000000000000000000000000000000000000000ff00ff}";
  const std::string dib = "{\\pict\\dibitmap0\\picwgoal300\\pichgoal300 " + bitmap;
  const std::string padded = "{\\pict\\dibitmap0\\picwgoal300\\pichgoal300\\piccropl-300 " + bitmap;
  const std::string unreadable = "{\\pict\\wmetafile8\\picwgoal300\\pichgoal300 0100}";
  const EmailBody body =
      BodyOf("\\pard one " + png + " two " + dib + " three " + unreadable + png + padded + "\\par");
  ASSERT_EQ(body.pictures.size(), 3U) << "a picture shown twice is sent once, cropped or not";
  EXPECT_EQ(body.pictures[0].bytes, "\x89PNG\r\n\x1a\n");
  EXPECT_TRUE(body.pictures[1].bytes.starts_with("\x89PNG")) << "a bitmap is sent as PNG";
  EXPECT_THAT(body.body,
              testing::ContainsRegex("one <img src=\"cid:picture1[^\"]*\" alt=\"\" width=\"100\" "
                                     "height=\"50\"[^>]*> two <img src=\"cid:picture2[^>]*> three "
                                     "\\[WMF picture\\]<img src=\"cid:picture1[^>]*>"
                                     "<img src=\"cid:picture3[^>]* width=\"40\" height=\"20\""));
  EXPECT_EQ(body.plain_text, "one  two  three ");
  for (const mail::Part& picture : body.pictures) {
    EXPECT_EQ(picture.content_type, "image/png");
    EXPECT_THAT(picture.content_id, testing::MatchesRegex("picture[123]\\.[0-9a-f]{16}@tenora"));
    EXPECT_THAT(body.body, HasSubstr("\"cid:" + picture.content_id + "\""));
  }
}

// Mail programs hide the rest of longer messages.
constexpr std::size_t kMostHtml = 100'000;

TEST(EmailBody, TheAgencysTemplatesAreSafeToSend) {
  int letters = 0;
  for (const char* name : {"Templates", "Owner Templates", "Cheque"}) {
    const auto folder = test::SourceDir() / "examples/agency" / name;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      RichTextBox box;
      box.LoadFile(entry.path());
      const EmailBody body = MakeEmailBody(box);
      EXPECT_THAT(body.body, HasSubstr("K\u014Dwhai &amp; Harbour")) << entry.path();
      EXPECT_THAT(body.plain_text, HasSubstr("K\u014Dwhai & Harbour")) << entry.path();
      EXPECT_EQ(test::DocumentHtmlCheck::Fault(body.body), "") << entry.path();
      EXPECT_LT(body.body.size(), kMostHtml / 5) << entry.path();
      ++letters;
    }
  }
  EXPECT_GE(letters, 11);
}

TEST(EmailBody, OfALongLetterIsShownWhole) {
  std::string letter;
  for (int i = 0; i < 60; ++i) {
    letter +=
        "\\pard\\sa160\\f0\\fs22 Please {\\b pay} the rent of your home on the first day of the "
        "month, {\\cf1 without fail}, and tell us of whatever needs repair.\\par\r\n";
  }
  for (int i = 0; i < 100; ++i) {
    for (const char* border : {"\\trowd\\trgaph100", "\\cellx2000", "\\cellx5000"}) {
      letter += border;
      letter += "\\clbrdrt\\brdrs\\brdrw15\\clbrdrb\\brdrs\\brdrw15";
    }
    letter +=
        "\\cellx9000\\pard\\intbl 21 November\\cell Rent of a week\\cell\\qr "
        "$420.00\\cell\\row\r\n";
  }
  EXPECT_LT(BodyOf(letter + "\\pard\\par").body.size(), kMostHtml);
}

}  // namespace
}  // namespace tenora
