#include "platform/mail/smtp_client.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/runtime/error.h"
#include "support/environment.h"
#include "support/errors.h"
#include "support/smtp_server.h"

namespace tenora::mail {
namespace {

Server Local(const test::SmtpServer& server) {
  Server result;
  result.host = "localhost";
  result.port = server.port();
  result.waits = Waits::AllOf(std::chrono::seconds(20));
  return result;
}

Message Letter() {
  Message message;
  message.from = {"Kōwhai & Harbour", "office@example.test"};
  message.to = {{"Tama Māhuta", "tama@example.test"}};
  message.subject = "Your rent for Ōrākei";
  message.text = "Kia ora Māhuta\n.\n..dots\nFrom here € 5\n";
  message.html = "<p>Kia ora <b>Māhuta</b></p>\n";
  message.date = Date::FromCalendar(2026, 11, 21, 9, 30);
  return message;
}

std::optional<RuntimeError> Failure(const Server& server, const Message& message) {
  return test::RaisedBy([&] { SmtpClient().Send(server, message); });
}

TEST(SmtpClient, WhatArrivesIsAStandardMessage) {
  const test::SmtpServer server("plain");
  Message message = Letter();
  message.inline_parts = {{"image/png", "logo.png", "picture1", std::string(3000, '\x89')}};
  message.attachments = {{"application/pdf", "Receipt – Māhuta.pdf", "", "%PDF-1.4"}};
  SmtpClient().Send(Local(server), message);
  EXPECT_EQ(server.Envelope(1), "office@example.test\ntama@example.test");
  const std::string parsed = test::ParseMessage(server.MessageFile(1));
  const std::string expected = R"(from: Kōwhai & Harbour <office@example.test>
to: Tama Māhuta <tama@example.test>
subject: Your rent for Ōrākei
date: Sat, 21 Nov 2026 09:30:00 )";
  EXPECT_EQ(parsed.substr(0, expected.size()), expected);
  EXPECT_EQ(parsed.substr(parsed.find("headers:")),
            R"(headers: content-type,date,from,message-id,mime-version,subject,to
defects: []
multipart/mixed | None | None
  multipart/alternative | None | None
    text/plain | None | None
    'Kia ora Māhuta\n.\n..dots\nFrom here € 5\n'
    multipart/related | None | None
      text/html | None | None
      '<p>Kia ora <b>Māhuta</b></p>\n'
      image/png | logo.png | <picture1>
      3000 bytes
  application/pdf | Receipt – Māhuta.pdf | None
  8 bytes
)");
}

TEST(SmtpClient, ABulkRunKeepsItsConnection) {
  const test::SmtpServer server("plain");
  SmtpClient client;
  for (int i = 0; i < 20; ++i) client.Send(Local(server), Letter());
  EXPECT_EQ(server.Messages().size(), 20U);
  EXPECT_EQ(server.Connections(), 1);
}

TEST(SmtpClient, EncryptsAndVerifies) {
  const test::ScratchFolder folder;
  const test::Certificate own = test::MakeCertificate(folder.path());
  const test::SmtpServer server("starttls", {"cert=" + own.certificate.string(),
                                             "key=" + own.key.string(), "login=ann:secret"});
  Server settings = Local(server);
  settings.ssl = true;
  settings.user = "ann";
  settings.password = "secret";
  {
    const test::Environment trust({{"SSL_CERT_FILE", own.certificate}});
    EXPECT_FALSE(Failure(settings, Letter()));
    Server by_address = settings;
    by_address.host = "127.0.0.1";
    EXPECT_EQ(Failure(by_address, Letter()).value().number(), smtp_error::kCertificate);
  }
  EXPECT_EQ(Failure(settings, Letter()).value().number(), smtp_error::kCertificate)
      << "a certificate nobody vouches for was taken";
  EXPECT_EQ(server.Messages().size(), 1U);
}

TEST(SmtpClient, Port465IsEncryptedFromTheFirstByte) {
  const test::ScratchFolder folder;
  const test::Certificate own = test::MakeCertificate(folder.path());
  std::optional<test::SmtpServer> server;
  try {
    server.emplace("tls", std::vector<std::string>{"cert=" + own.certificate.string(),
                                                   "key=" + own.key.string(), "port=465"});
  } catch (const std::runtime_error& error) {
    GTEST_SKIP() << "port 465 cannot be listened on here: " << error.what();
  }
  Server settings = Local(*server);
  settings.ssl = true;
  EXPECT_EQ(Failure(settings, Letter()).value().number(), smtp_error::kCertificate);
  const test::Environment trust({{"SSL_CERT_FILE", own.certificate}});
  EXPECT_FALSE(Failure(settings, Letter()));
  EXPECT_EQ(server->Messages().size(), 1U);
}

TEST(SmtpClient, NothingIsSentInTheClearWhenSslIsOn) {
  const test::SmtpServer server("plain");
  Server settings = Local(server);
  settings.ssl = true;
  EXPECT_EQ(Failure(settings, Letter()).value().number(), smtp_error::kCannotConnect);
  EXPECT_TRUE(server.Messages().empty());
}

TEST(SmtpClient, LogsInOnlyWithTheRightPasswordAndNeverShowsIt) {
  const test::SmtpServer server("plain", {"login=ann:secret"});
  Server settings = Local(server);
  settings.user = "ann";
  settings.password = "secret";
  EXPECT_FALSE(Failure(settings, Letter()));
  settings.password = "wrong-pass";
  const RuntimeError error = Failure(settings, Letter()).value();
  EXPECT_EQ(error.number(), smtp_error::kLoginRefused);
  for (const char* leak : {"wrong-pass", "d3JvbmctcGFzcw"}) {
    EXPECT_EQ(std::string(error.description()).find(leak), std::string::npos);
  }
}

TEST(SmtpClient, ARefusalNamesRecipientAndReason) {
  const test::SmtpServer server("plain", {"refuse=tama@example.test"});
  const RuntimeError error = Failure(Local(server), Letter()).value();
  EXPECT_EQ(error.number(), smtp_error::kRecipientRefused);
  for (const char* part : {"tama@example.test", "no such mailbox here", "localhost:"}) {
    EXPECT_NE(std::string(error.description()).find(part), std::string::npos)
        << error.description();
  }
  EXPECT_TRUE(server.Messages().empty());
}

TEST(SmtpClient, BreaksOffWhenAskedTo) {
  for (const char* stage : {"connect", "MAIL"}) {
    const test::SmtpServer server("silent-" + std::string(stage));
    Server settings = Local(server);
    int asked = 0;
    settings.stop_asked = [&asked] { return ++asked > 2; };
    EXPECT_EQ(Failure(settings, Letter()).value().number(), error_number::kCancelled) << stage;
  }
}

TEST(SmtpClient, ARefusalIsToldInFullButForSecretsAndNoise) {
  for (const char* stage : {"MAIL", "AUTH"}) {
    const test::SmtpServer server("quoting-" + std::string(stage));
    Server settings = Local(server);
    settings.user = "ann";
    settings.password = "secret";
    if (stage == std::string("MAIL")) settings.user = settings.password = "";
    const std::string text(Failure(settings, Letter()).value().description());
    EXPECT_NE(text.find("(550 5.7.8 Unknown \xEF\xBF\xBD [31m 5.7.8 "), std::string::npos) << text;
    EXPECT_EQ(text.find("AGFubgBzZWNyZXQ"), std::string::npos) << text;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
  }
}

TEST(SmtpClient, RefusesServersThatAreNone) {
  for (const char* host : {"", "bad host", "x/y", "user@host", "a\r\nb", "no-such-host.invalid"}) {
    Server settings;
    settings.host = host;
    settings.waits = Waits::AllOf(std::chrono::seconds(5));
    EXPECT_EQ(Failure(settings, Letter()).value().number(), smtp_error::kCannotConnect) << host;
  }
}

}  // namespace
}  // namespace tenora::mail
