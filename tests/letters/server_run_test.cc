// Runs of letters from a branch on a server that goes away, comes back and brings newer data.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "platform/access/database_writer.h"
#include "platform/query/engine.h"
#include "platform/server/branch_import.h"
#include "support/fake_platform.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr std::size_t kTogether = 32;  // letters whose rows come in one round trip
constexpr const char* kNorth = "service=runs branch=North";

class ServerRun : public testing::Test, protected GenerationObserver {
 protected:
  void SetUp() override {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    test::PostgresServer::Get().MakeDatabase("runs");
    Import();
    Settings settings(machine_.Parts());
    settings.SaveSettingText("Settings", "Networkable", "1");
    settings.SaveSettingText("Settings", "DatabaseLocation", kNorth);
  }

  fs::path Home() const { return machine_.ProgramFolder(); }
  fs::path File() const { return Home() / "property.mdb"; }
  void Import() const {
    const auto connection = server::Connection::Open("runs", std::chrono::seconds(0));
    server::ImportBranch(*connection, "North", File(), server::LayoutChange::kTake);
  }

  GenerationSummary Run(Session& session) {
    GenerationRequest request;
    request.template_kind = kTemplates;
    request.template_name = "Tenancy statement";
    Generation generation(session, AfterError::kNextRecipient, *this);
    if (wait_for_server_) generation.WaitForServer(*wait_for_server_);
    return generation.Run(request, [&](const Caches& caches) {
      std::vector<Recipient> all;
      for (const RecipientRow& row : ListRecipients(caches, kTemplates, {.closed = true})) {
        all.push_back(row.recipient);
      }
      return all;
    });
  }

  // The letters, by their paths in the data folder; they are removed.
  std::map<std::string, std::string> TakeLetters() const {
    std::map<std::string, std::string> letters;
    for (const auto& entry : fs::directory_iterator(Home())) {
      if (!entry.is_directory() ||
          fs::exists(test::SourceDir() / "examples/agency" / entry.path().filename())) {
        continue;
      }
      for (const auto& file : fs::directory_iterator(entry)) {
        letters[file.path().lexically_relative(Home())] = ReadWholeFile(file);
      }
      fs::remove_all(entry);
    }
    return letters;
  }
  std::map<std::string, std::string> LettersFromFile() {
    Settings settings(machine_.Parts());
    settings.SaveSettingText("Settings", "Networkable", "0");
    Session session(machine_.Parts());
    EXPECT_TRUE(Run(session).complete());
    return TakeLetters();
  }

  void LetterFinished(const LetterReport&) override {
    if (++finished_ == 5 && after_five_) after_five_();
    if (after_each_) after_each_();
  }

  void WaitingForServer(std::chrono::milliseconds) override {
    ++waits_;
    if (while_waiting_) while_waiting_();
  }
  void ServerIsBack() override { ++backs_; }

  test::FakePlatform machine_;
  std::optional<std::chrono::milliseconds> wait_for_server_;
  int waits_ = 0, backs_ = 0;
  std::size_t finished_ = 0;
  std::function<void()> after_five_, after_each_, while_waiting_;
};

TEST_F(ServerRun, FailsByNameWithoutItsServerAndIsResumed) {
  Session session(machine_.Parts());
  after_five_ = [] { test::PostgresServer::Get().Crash(); };
  wait_for_server_ = std::chrono::milliseconds(300);
  const GenerationSummary summary = Run(session);
  ASSERT_GT(summary.asked, kTogether + 3);
  EXPECT_EQ(summary.done, kTogether) << "whose rows had come";
  ASSERT_EQ(summary.failed.size(), 1U);
  EXPECT_EQ(summary.failed[0].number, kTogether + 1);
  EXPECT_FALSE(summary.failed[0].recipient.name.empty());
  EXPECT_TRUE(summary.stopped);
  EXPECT_EQ(waits_, 1);
  EXPECT_EQ(backs_, 0);
  EXPECT_THAT(machine_.dialogs.Texts().front(), HasSubstr("'runs'"));

  test::PostgresServer::Get().Restart();
  const GenerationSummary resumed =
      Generation(session, AfterError::kNextRecipient, *this).Resume(summary.log);
  EXPECT_TRUE(resumed.complete());
  EXPECT_EQ(resumed.done_before, kTogether);
  const auto letters = TakeLetters();
  EXPECT_EQ(letters.size(), summary.asked);
  EXPECT_TRUE(letters == LettersFromFile());
}

TEST_F(ServerRun, AsksTheServerForManyLettersAtOnce) {
  const auto round_trips = [&] {
    return machine_.workspace->OpenDatabase(kNorth)->Origin().value().round_trips;
  };
  Session session(machine_.Parts());
  ASSERT_TRUE(session.ReloadRentalData());
  std::vector<int> after;
  after_each_ = [&] { after.push_back(round_trips()); };
  EXPECT_TRUE(Run(session).complete());
  // Meanwhile it may have been asked once more whether its data are still the same.
  ASSERT_GT(after.size(), kTogether);
  EXPECT_LE(after[kTogether - 1] - after[0], 1) << "within the first letters";
  EXPECT_LE(after.back() - after[0], 3) << "with the further ones";
}

TEST_F(ServerRun, LosesNoLetterToARestart) {
  Session session(machine_.Parts());
  after_five_ = [] { test::PostgresServer::Get().Restart(); };
  EXPECT_TRUE(Run(session).complete());
  const auto letters = TakeLetters();
  EXPECT_TRUE(letters == LettersFromFile());
  EXPECT_THAT(machine_.dialogs.Texts(), testing::IsEmpty());
}

TEST_F(ServerRun, GoesOnWhenItsServerIsBack) {
  Session session(machine_.Parts());
  after_five_ = [] { test::PostgresServer::Get().Crash(); };
  while_waiting_ = [] { test::PostgresServer::Get().Restart(); };
  const GenerationSummary summary = Run(session);
  ASSERT_EQ(summary.failed.size(), 1U);
  EXPECT_EQ(summary.failed[0].number, kTogether + 1);
  EXPECT_EQ(summary.done, summary.asked - 1);
  EXPECT_FALSE(summary.stopped);
  EXPECT_EQ(waits_, 1);
  EXPECT_EQ(backs_, 1);
  EXPECT_TRUE(
      Generation(session, AfterError::kNextRecipient, *this).Resume(summary.log).complete());
  const auto letters = TakeLetters();
  EXPECT_TRUE(letters == LettersFromFile());
}

}  // namespace
}  // namespace tenora
