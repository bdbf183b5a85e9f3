#include "platform/mail/mail_client.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/errors.h"
#include "support/stand_in.h"

namespace tenora::mail {
namespace {

using test::StandIn;

Message Letter() {
  Message message;
  message.to = {{"", "ann@x.test"}};
  message.subject = "Rent, due',to='spy@x.test";
  message.html = "<p>Kia ora Māhuta</p>";
  message.date = Date::FromCalendar(2026, 11, 21);
  return message;
}

// The letters in the folder, by name.
std::vector<std::filesystem::path> Drafts(const StandIn& program) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(program.Scratch())) {
    files.push_back(entry.path());
  }
  return files;
}

std::filesystem::path OnlyDraft(const StandIn& program) {
  const auto drafts = Drafts(program);
  return drafts.size() == 1 ? drafts.front() : std::filesystem::path();
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
  ASSERT_TRUE(fields[3].starts_with("message=/")) << fields[3];
  EXPECT_EQ(fields[3].find_first_of(" '\""), std::string::npos) << fields[3];
  EXPECT_EQ(ReadWholeFile(OnlyDraft(thunderbird)), "<p>Kia ora Māhuta</p>");
}

TEST(MailClient, HandsADraftToTheDesktop) {
  const StandIn opener("xdg-open");
  ComposeInMailClient(Letter(), opener.Scratch());
  const std::string draft = ReadWholeFile(opener.Call().at(0));
  EXPECT_TRUE(draft.starts_with("X-Unsent: 1\r\nTo: ann@x.test\r\n")) << draft;
  EXPECT_TRUE(draft.ends_with("\r\n\r\n<p>Kia ora Māhuta</p>"));
}

TEST(MailClient, KeepsLettersPrivateAndNotForEver) {
  const StandIn opener("xdg-open");
  std::filesystem::create_directory(opener.Scratch());
  const auto old = opener.Scratch() / "message-old.eml", other = opener.Scratch() / "notes.txt";
  for (const auto& file : {old, other}) {
    WriteWholeFile(file, "x");
    std::filesystem::last_write_time(
        file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 30));
  }
  for (int i = 0; i < 3; ++i) ComposeInMailClient(Letter(), opener.Scratch());
  EXPECT_EQ(Drafts(opener).size(), 4U);
  EXPECT_FALSE(std::filesystem::exists(old));
  EXPECT_TRUE(std::filesystem::exists(other));
  struct stat status {};
  ASSERT_EQ(::stat(opener.Scratch().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST(MailClient, WritesNothingThroughALink) {
  const StandIn opener("xdg-open");
  const test::ScratchFolder elsewhere;
  std::filesystem::create_directory_symlink(elsewhere.path(), opener.Scratch());
  EXPECT_THROW(ComposeInMailClient(Letter(), opener.Scratch()), RuntimeError);
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere.path()));
}

TEST(MailClient, SaysWhatToDoWhenNoProgramShowsTheMessage) {
  for (const char* name : {"xdg-open", "thunderbird", "no-mail-program"}) {
    const StandIn failing(name, 3);
    const auto error = test::RaisedBy([&] { ComposeInMailClient(Letter(), failing.Scratch()); });
    ASSERT_TRUE(error) << name;
    EXPECT_EQ(error->number(), NoMailClient::kNumber);
    const bool started = name != std::string("no-mail-program");
    const std::string reason = started
                                   ? std::string(name) + " could not open the message (status 3)"
                                   : "Neither thunderbird nor xdg-open was found";
    for (const std::string& part : {reason, std::string("Install Thunderbird, or")}) {
      EXPECT_NE(error->description().find(part), std::string::npos) << error->description();
    }
  }
}

TEST(MailClient, SaysWhenTheProgramCannotBeStarted) {
  const StandIn broken("xdg-open");
  const auto program = broken.Scratch().parent_path() / "xdg-open";
  WriteWholeFile(program, "#!/no/such/interpreter\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  EXPECT_THROW(ComposeInMailClient(Letter(), broken.Scratch()), RuntimeError);
}

}  // namespace
}  // namespace tenora::mail
