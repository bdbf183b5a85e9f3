// Runs of letters against a server that misbehaves once, or always, at one stage.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "platform/mail/smtp_client.h"
#include "platform/runtime/text.h"
#include "support/smtp_server.h"

namespace tenora::mail {
namespace {

constexpr int kLetters = 30;
constexpr int kHit = 7;

enum class Outcome { kMailed, kFailed, kInDoubt };

struct Result {
  Outcome outcome = Outcome::kMailed;
  int number = 0;
  std::string text;
};

std::string Recipient(int letter) { return "t" + std::to_string(letter) + "@example.test"; }

Result SendOne(SmtpClient& client, const Server& settings, int letter, bool long_text) {
  Message message;
  message.from = {"", "office@example.test"};
  message.to = {{"", Recipient(letter)}};
  message.text = "Kia ora\n.\nletter " + std::to_string(letter);
  // More than the sockets hold: the server breaks off with the final "." unsent.
  if (long_text) message.text += std::string(12'000'000, 'x');
  try {
    client.Send(settings, message);
    return {};
  } catch (const DeliveryUnknown& error) {
    return {Outcome::kInDoubt, error.number(), error.what()};
  } catch (const RuntimeError& error) {
    return {Outcome::kFailed, error.number(), error.what()};
  }
}

// How often the server took a letter to each recipient.
std::map<std::string, int> Taken(const test::SmtpServer& server) {
  std::map<std::string, int> taken;
  for (int n = 1; std::filesystem::exists(server.MessageFile(n)); ++n) {
    ++taken[Split(server.Envelope(n), "\n").at(1)];
  }
  return taken;
}

Server Local(const test::SmtpServer& server) {
  Server settings;
  settings.host = "127.0.0.1";
  settings.port = server.port();
  settings.waits = Waits::AllOf(std::chrono::seconds(60));
  return settings;
}

// Long enough for a loaded machine's proper answers, short enough to wait for a silent server.
constexpr std::chrono::milliseconds kShort{1500};

// Shortens the wait for the stage's own answer.
void Hurry(Waits& waits, const std::string& stage) {
  if (stage == "connect" || stage == "EHLO") waits.greeting = kShort;
  if (stage == "MAIL") waits.sender = kShort;
  if (stage == "RCPT") waits.recipient = kShort;
  if (stage == "DATA") waits.data = kShort;
  if (stage == "TEXT") waits.block = kShort;
  if (stage == "BODY") waits.end = kShort;
}

TEST(SmtpFaults, EveryLetterIsMailedOnceOrFailsOrIsInDoubtForAReason) {
  const Result mailed{};
  const Result lost{Outcome::kFailed, smtp_error::kCannotConnect, {}};
  const Result not_sent{Outcome::kFailed, smtp_error::kNotSent, {}};
  const Result sender{Outcome::kFailed, smtp_error::kSenderRefused, {}};
  const Result recipient{Outcome::kFailed, smtp_error::kRecipientRefused, {}};
  const Result doubt{Outcome::kInDoubt, smtp_error::kNotSent, {}};
  // What becomes of the letter that meets the fault. A kept connection that breaks before the text
  // is replaced by a fresh one.
  const struct {
    const char* stage;
    std::vector<std::pair<const char*, Result>> faults;
  } table[] = {
      {"connect",
       {{"hangup", lost},
        {"reset", lost},
        {"silent", lost},
        {"late", lost},
        {"refuse4", lost},
        {"refuse5", lost},
        {"shutdown", lost},
        {"slow", mailed},
        {"surplus", lost}}},
      // A server that refuses EHLO may know HELO.
      {"EHLO",
       {{"hangup", lost},
        {"reset", lost},
        {"silent", lost},
        {"late", lost},
        {"refuse4", mailed},
        {"refuse5", mailed},
        {"shutdown", lost},
        {"slow", mailed},
        {"surplus", mailed}}},
      {"MAIL",
       {{"hangup", mailed},
        {"reset", mailed},
        {"silent", lost},
        {"late", lost},
        {"refuse4", sender},
        {"refuse5", sender},
        {"shutdown", mailed},
        {"slow", mailed},
        {"surplus", mailed}}},
      {"RCPT",
       {{"hangup", mailed},
        {"reset", mailed},
        {"silent", lost},
        {"late", lost},
        {"refuse4", recipient},
        {"refuse5", recipient},
        {"shutdown", mailed},
        {"slow", mailed},
        {"surplus", mailed}}},
      {"DATA",
       {{"hangup", mailed},
        {"reset", mailed},
        {"silent", lost},
        {"late", lost},
        {"refuse4", not_sent},
        {"refuse5", not_sent},
        {"shutdown", mailed},
        {"slow", mailed},
        {"surplus", lost}}},
      {"TEXT",
       {{"hangup", lost},
        {"reset", lost},
        {"silent", lost},
        {"refuse4", not_sent},
        {"refuse5", not_sent},
        {"shutdown", lost},
        {"slow", mailed},
        {"surplus", lost}}},
      {"BODY",
       {{"hangup", doubt},
        {"reset", doubt},
        {"silent", doubt},
        {"late", doubt},
        {"refuse4", not_sent},
        {"refuse5", not_sent},
        {"shutdown", not_sent},
        {"slow", mailed},
        {"surplus", mailed}}},
  };
  for (const auto& [stage, faults] : table) {
    for (const auto& [action, expected] : faults) {
      SCOPED_TRACE(std::string(action) + " at " + stage);
      const std::string fault = std::string(action) + "-" + stage;
      // One connection serves the whole run, so that its beginning is met by the first letter.
      const bool at_start = stage == std::string("connect") || stage == std::string("EHLO");
      const int hit = at_start ? 1 : kHit;
      const test::SmtpServer server(fault, {"after=" + std::to_string(hit - 1), "times=1"});
      Server settings = Local(server);
      if (fault.starts_with("silent") || fault.starts_with("late")) Hurry(settings.waits, stage);
      SmtpClient client;
      std::vector<Result> results;
      for (int letter = 1; letter <= kLetters; ++letter) {
        const bool long_text = letter == hit && stage == std::string("TEXT");
        results.push_back(SendOne(client, settings, letter, long_text));
      }
      const auto taken = Taken(server);
      for (int letter = 1; letter <= kLetters; ++letter) {
        const Result& result = results[letter - 1];
        const Result& wanted = letter == hit ? expected : mailed;
        const int copies = taken.contains(Recipient(letter)) ? taken.at(Recipient(letter)) : 0;
        EXPECT_EQ(result.outcome, wanted.outcome) << "letter " << letter << ": " << result.text;
        EXPECT_EQ(result.number, wanted.number) << "letter " << letter << ": " << result.text;
        EXPECT_LE(copies, 1) << "letter " << letter;
        if (result.outcome != Outcome::kInDoubt) {
          EXPECT_EQ(copies, result.outcome == Outcome::kMailed ? 1 : 0) << "letter " << letter;
        }
      }
    }
  }
}

TEST(SmtpFaults, AFreshConnectionIsTriedOnceALetter) {
  const struct {
    const char* fault;
    int connections;
  } cases[] = {
      {"shutdown-MAIL", 2 * kLetters}, {"hangup-MAIL", kLetters}, {"shutdown-connect", kLetters}};
  for (const auto& c : cases) {
    const test::SmtpServer server(c.fault);
    SmtpClient client;
    for (int letter = 1; letter <= kLetters; ++letter) {
      const Result result = SendOne(client, Local(server), letter, false);
      EXPECT_EQ(result.number, smtp_error::kCannotConnect) << c.fault << result.text;
    }
    EXPECT_EQ(server.Connections(), c.connections) << c.fault;
    EXPECT_TRUE(server.Messages().empty());
  }
}

TEST(SmtpFaults, OnlyTheConnectionItselfMustComeWithinAMinute) {
  const Waits waits;
  EXPECT_EQ(waits.connect, std::chrono::minutes(1));
  // A greeting that takes longer than connecting may.
  const test::SmtpServer server("slow-connect");
  Server settings = Local(server);
  settings.waits.connect = std::chrono::milliseconds(100);
  SmtpClient client;
  const Result result = SendOne(client, settings, 1, false);
  EXPECT_EQ(result.outcome, Outcome::kMailed) << result.text;
}

}  // namespace
}  // namespace tenora::mail
