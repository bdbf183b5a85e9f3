#include "output/email_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/environment.h"
#include "support/fake_platform.h"
#include "support/smtp_server.h"
#include "support/stand_in.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class EmailSender : public testing::Test {
 protected:
  void UseSmtp(int port) {
    session_.options.SmtpSend = true;
    session_.options.SmtpAddress = "127.0.0.1";
    session_.options.SmtpPort = static_cast<std::int16_t>(port);
    session_.options.SmtpSender = "Office <office@example.test>";
  }
  std::vector<std::string> Boxes() {
    std::vector<std::string> texts;
    for (const auto& shown : platform_.dialogs.shown()) texts.push_back(shown.text);
    return texts;
  }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  clsEmailSender sender_{session_};
};

TEST_F(EmailSender, TheOptionChoosesHtmlOrPlainBySmtp) {
  const test::SmtpServer server("plain");
  UseSmtp(server.port());
  EmailBody body;
  body.body = "<b>Kia ora</b>";
  body.plain_text = "Kia ora";
  EXPECT_TRUE(sender_.DeliverEmail("ann@example.test", body, "Rent", true));
  body.body = "Plain & simple";
  EXPECT_TRUE(sender_.DeliverEmail("ann@example.test; bob@example.test", body, "Rent", false));
  EXPECT_THAT(test::ParseMessage(server.MessageFile(1)),
              testing::EndsWith("multipart/alternative | None | None\n"
                                "  text/plain | None | None\n  'Kia ora'\n"
                                "  text/html | None | None\n  '<b>Kia ora</b>'\n"));
  EXPECT_THAT(test::ParseMessage(server.MessageFile(2)),
              HasSubstr("text/plain | None | None\n'Plain & simple\\n'"));
  EXPECT_EQ(server.Envelope(2), "office@example.test\nann@example.test\nbob@example.test");
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(EmailSender, ShowsNumberAndDescriptionAndTriesNothingElse) {
  const test::SmtpServer server("plain", {"refuse=ann@example.test"});
  UseSmtp(server.port());
  EXPECT_FALSE(sender_.DeliverEmail("ann@example.test", {}, "Rent", true));
  session_.options.SmtpPort = 1;
  EXPECT_FALSE(sender_.DeliverEmail("bob@example.test", {}, "Rent", true));
  EXPECT_FALSE(sender_.DeliverEmail("bob@example.test\r\nBcc: x@y.test", {}, "Rent", true));
  session_.options.SmtpSender.clear();
  EXPECT_FALSE(sender_.DeliverEmail("bob@example.test", {}, "Rent", true));
  EXPECT_THAT(Boxes(), ElementsAre(StartsWith("-2147220977 - "), StartsWith("-2147220973 - "),
                                   StartsWith("5 - "), StartsWith("5 - The option SmtpSender: ")));
}

TEST_F(EmailSender, TheMailProgramGetsEveryPictureInItsPlace) {
  EmailBody body;
  body.body = "M\u0101huta cid:picture1";
  for (int i = 1; i <= 12; ++i) {
    const std::string id = "picture" + std::to_string(i);
    body.pictures.push_back({"image/png", id + ".png", id, std::string(3, static_cast<char>(i))});
    body.body += "<img src=\"cid:" + id + "\" alt=\"\">";
  }
  const test::StandIn thunderbird("thunderbird");
  const test::Environment environment({{"XDG_CACHE_HOME", thunderbird.Scratch()}});
  EXPECT_TRUE(sender_.DeliverEmail("ann@example.test", body, "Rent", true));
  const std::string html =
      ReadWholeFile(std::filesystem::directory_iterator(thunderbird.Scratch() / "Tenora")->path());
  EXPECT_THAT(
      html,
      StartsWith("M&#257;huta cid:picture1<img src=\"data:image/png;base64,AQEB\" alt=\"\"><img"));
  EXPECT_THAT(html, testing::EndsWith("<img src=\"data:image/png;base64,DAwM\" alt=\"\">"));
}

TEST_F(EmailSender, SaysWhenNoMailProgramIsInstalled) {
  const test::Environment nothing_there({{"PATH", platform_.folder.path()}});
  EXPECT_FALSE(sender_.DeliverEmail("ann@example.test", {}, "Rent", false));
  EXPECT_THAT(Boxes(),
              ElementsAre(StartsWith("Unable to send an email.  You do not have Microsoft Outlook "
                                     "correctly installed.  (Note - Microsoft Outlook Express is "
                                     "not supported)\r\n")));
}

}  // namespace
}  // namespace tenora
