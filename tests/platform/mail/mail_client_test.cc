#include "platform/mail/mail_client.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::mail {
namespace {

// Stands in for a mail program: records its arguments, one a line.
class StandIn {
 public:
  explicit StandIn(const std::string& name) {
    const auto program = folder_ / name;
    WriteWholeFile(program, "#!/bin/sh\nfor a; do printf '%s\\n' \"$a\"; done >'" +
                                (folder_ / "new").string() + "'\nPATH=/usr/bin:/bin mv '" +
                                (folder_ / "new").string() + "' '" + (folder_ / "call").string() +
                                "'\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    old_path_ = std::getenv("PATH");
    ::setenv("PATH", folder_.path().c_str(), 1);
  }
  ~StandIn() { ::setenv("PATH", old_path_.c_str(), 1); }

  std::vector<std::string> Call() const {
    while (!std::filesystem::exists(folder_ / "call")) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return Split(ReadWholeFile(folder_ / "call"), "\n");
  }
  std::filesystem::path Scratch() const { return folder_ / "mail"; }

 private:
  test::ScratchFolder folder_;
  std::string old_path_;
};

Message Letter() {
  Message message;
  message.to = {{"", "ann@x.test"}};
  message.subject = "Rent, due',to='spy@x.test";
  message.html = "<p>Kia ora Māhuta</p>";
  message.date = Date::FromCalendar(2026, 11, 21);
  return message;
}

TEST(MailClient, FillsThunderbirdsComposeWindow) {
  const StandIn thunderbird("thunderbird");
  ComposeInMailClient(Letter(), thunderbird.Scratch());
  const std::vector<std::string> call = thunderbird.Call();
  ASSERT_GE(call.size(), 2U);
  EXPECT_EQ(call[0], "-compose");
  const std::vector<std::string> fields = Split(call[1], ",");
  ASSERT_EQ(fields.size(), 4U) << call[1];
  EXPECT_EQ(fields[0], "to=ann%40x.test");
  EXPECT_EQ(fields[1], "subject=Rent%2C%20due%27%2Cto%3D%27spy%40x.test");
  EXPECT_EQ(fields[2], "format=html");
  EXPECT_EQ(ReadWholeFile(fields[3].substr(8)), "<p>Kia ora Māhuta</p>");
}

TEST(MailClient, HandsADraftToTheDesktop) {
  const StandIn opener("xdg-open");
  ComposeInMailClient(Letter(), opener.Scratch());
  const std::string draft = ReadWholeFile(opener.Call().at(0));
  EXPECT_TRUE(draft.starts_with("X-Unsent: 1\r\nTo: ann@x.test\r\n")) << draft;
  EXPECT_TRUE(draft.ends_with("\r\n\r\n<p>Kia ora Māhuta</p>"));
}

TEST(MailClient, SaysWhenThereIsNone) {
  const StandIn other("nothing-of-the-kind");
  try {
    ComposeInMailClient(Letter(), other.Scratch());
    FAIL();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number(), 429);
  }
}

}  // namespace
}  // namespace tenora::mail
