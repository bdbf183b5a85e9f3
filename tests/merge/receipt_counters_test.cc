// Receipt numbers handed over between a branch's file and a real server, by processes that are
// killed at every step of it.
#include "merge/receipt_counters.h"

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include "merge/building_receipt_number.h"
#include "merge_fixture.h"
#include "platform/server/branch_import.h"
#include "support/errors.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

using server::Connection;
using server::RunningNumbers;
using test::PostgresServer;
using testing::HasSubstr;

constexpr std::chrono::seconds kNoLimit{0};

// A file of which the process ends, as if killed, at the call with this number or behind it.
class KillingFile : public query::EngineDatabase {
 public:
  KillingFile(std::unique_ptr<query::EngineDatabase> file, int steps)
      : file_(std::move(file)), steps_(steps) {}

  const std::string& Name() const override { return file_->Name(); }
  std::unique_ptr<query::Recordset> OpenRecordset(std::string_view sql, int type,
                                                  int options) override {
    Step();
    return file_->OpenRecordset(sql, type, options);
  }
  query::TextMatch Texts() const override { return file_->Texts(); }
  std::vector<query::TableSummary> Tables() const override { return file_->Tables(); }
  std::int64_t Execute(std::string_view sql) override {
    Step();
    return file_->Execute(sql);
  }
  void BeginTrans() override {
    Step();
    file_->BeginTrans();
  }
  void CommitTrans() override {
    Step();
    file_->CommitTrans();
    Step();
  }
  void Rollback() override { file_->Rollback(); }

 private:
  void Step() {
    if (steps_-- == 0) ::_exit(9);
  }

  std::unique_ptr<query::EngineDatabase> file_;
  int steps_;
};

// The exit status of what a child process does.
template <typename Body>
int InChild(const Body& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    try {
      body();
    } catch (...) {
      ::_exit(1);
    }
    ::_exit(0);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// PR00003 belongs to the building PR00001.
class ReceiptCounters : public test::MergeTest {
 protected:
  ReceiptCounters() {
    machine_.InstallSampleDatabase();
    server_.MakeDatabase("numbers");
    server::ImportBranch(*Connection::Open("numbers", kNoLimit), "North", File(),
                         server::LayoutChange::kTake);
  }
  std::filesystem::path File() const { return machine_.ProgramFolder() / "property.mdb"; }

  static RunningNumbers Numbers(Connection& connection) {
    return RunningNumbers::Of(connection, "numbers", "North");
  }

  // The hand-over to the server, or back, in a process that dies at this step; false where it was
  // through before.
  bool Dies(bool to_server, int step) const {
    const int status = InChild([&] {
      const auto workspace = query::Workspace::Create();
      KillingFile file(workspace->OpenDatabase(File()), step);
      HandOverTo(file, to_server);
    });
    EXPECT_TRUE(status == 0 || status == 9) << status;
    return status == 9;
  }
  static HandOver HandOverTo(query::EngineDatabase& file, bool to_server) {
    const auto connection = Connection::Open("numbers", kNoLimit);
    RunningNumbers numbers = Numbers(*connection);
    return to_server ? HandOverToServer(file, numbers)
                     : HandBackToFile(file, numbers, Date::FromCalendar(2026, 11, 22));
  }
  HandOver HandOverTo(bool to_server) const {
    const auto workspace = query::Workspace::Create();
    return HandOverTo(*workspace->OpenDatabase(File()), to_server);
  }

  // 0 where they issue none.
  static int FromServer() {
    try {
      const auto connection = Connection::Open("numbers", kNoLimit);
      return static_cast<int>(Numbers(*connection).Issue("pr00001"));
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.number(), error_number::kPermissionDenied) << error.what();
      return 0;
    }
  }
  int FromFile() {
    session_.database.OpenDatabase();
    Letter("<<BuildingReceiptNumber>>");
    try {
      EXPECT_TRUE(InsertBuildingReceiptNumber(target_, "PR00003"));
      return std::stoi(Shown());
    } catch (const RuntimeError& error) {
      EXPECT_THAT(error.what(), HasSubstr("were handed over to a server"));
      return 0;
    }
  }

  PostgresServer& server_ = PostgresServer::Get();
};

TEST_F(ReceiptCounters, AreIssuedOnceWhereverAHandOverIsCutShort) {
  int last = FromFile();
  EXPECT_EQ(last, 1000);
  for (const bool to_server : {true, false}) {
    for (int step = 0;; ++step) {
      SCOPED_TRACE(testing::Message() << (to_server ? "here " : "back ") << step);
      const bool died = Dies(to_server, step);
      const int from_server = FromServer(), from_file = FromFile();
      EXPECT_TRUE(from_server == 0 || from_file == 0);
      if (from_server + from_file > 0) {
        EXPECT_EQ(from_server + from_file, ++last);
      }
      HandOverTo(to_server);
      EXPECT_EQ(HandOverTo(to_server), HandOver::kAlready);
      EXPECT_EQ(to_server ? FromServer() : FromFile(), ++last);
      EXPECT_EQ(to_server ? FromFile() : FromServer(), 0);
      if (!died) break;
      EXPECT_EQ(HandOverTo(!to_server), HandOver::kDone);
    }
  }
}

TEST_F(ReceiptCounters, OfAServersBranchAreShownWithoutTakingOne) {
  const auto text_from = [&](DatabaseUse use) {
    Session session(machine_.Parts(), use);
    session.database.TakeBranch("service=numbers branch=North", machine_.ProgramFolder());
    session.database.OpenDatabase();
    Letter("<<BuildingReceiptNumber>>");
    const MergeTarget target{session, letter_, editor_};
    const std::string error =
        test::ErrorOf([&] { EXPECT_TRUE(InsertBuildingReceiptNumber(target, "PR00003")); });
    return error + Shown();
  };
  EXPECT_EQ(FromFile(), 1000);
  for (const DatabaseUse use : {DatabaseUse::kLook, DatabaseUse::kChange}) {
    EXPECT_THAT(text_from(use), HasSubstr("issued by its file"));
  }
  HandOverTo(true);
  EXPECT_EQ(text_from(DatabaseUse::kLook), "1001");
  EXPECT_EQ(text_from(DatabaseUse::kLook), "1001");
  EXPECT_EQ(text_from(DatabaseUse::kChange), "1001");
  EXPECT_EQ(text_from(DatabaseUse::kLook), "1002");
}

TEST_F(ReceiptCounters, EightProcessesNeverGetTheSameNumberFromTheServer) {
  constexpr int kProcesses = 8, kNumbers = 200;
  server_.MakeLogin("numbers", "worker", "tenora_worker");
  server_.Run("numbers", "insert into rental.may_see select 'worker', id from rental.branch");
  HandOverTo(true);
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    int failed = 0;
    try {
      const auto connection = Connection::Open("numbers-worker", kNoLimit);
      std::ofstream list(File().string() + std::to_string(i));
      for (int k = 0; k < kNumbers; ++k) list << Numbers(*connection).Issue("PR00001") << '\n';
    } catch (...) {
      failed = 1;
    }
    ::_exit(failed);
  }
  std::set<int> numbers;
  for (int i = 0; i < kProcesses; ++i) {
    int status = -1;
    ::waitpid(children[static_cast<std::size_t>(i)], &status, 0);
    EXPECT_EQ(status, 0);
    std::ifstream list(File().string() + std::to_string(i));
    for (int number = 0; list >> number;) numbers.insert(number);
  }
  EXPECT_EQ(numbers.size(), static_cast<std::size_t>(kProcesses * kNumbers));
  EXPECT_EQ(*numbers.rbegin(), 999 + kProcesses * kNumbers);
}

TEST_F(ReceiptCounters, KeepEveryBuildingAndGoOnFromTheHigherNumber) {
  FromFile();
  const auto workspace = query::Workspace::Create();
  const auto file = workspace->OpenDatabase(File());
  file->Execute(
      "insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values "
      "('PR00002', 202, 'NxtReceipt', 'none yet')");
  HandOverTo(true);
  const auto connection = Connection::Open("numbers", kNoLimit);
  RunningNumbers numbers = Numbers(*connection);
  EXPECT_EQ(numbers.Issue("PR00001"), 1001);
  EXPECT_EQ(numbers.Issue("PR00002"), 1000);
  EXPECT_EQ(numbers.Issue("New building"), 1000);
  // What an earlier release, which does not know the mark, makes of the counters.
  EXPECT_EQ(test::NumberOf([] { StoredNumber("9E+99"); }), error_number::kOverflow);
  // A file of before the hand-over is put back, and counts on by itself.
  machine_.InstallSampleDatabase();
  EXPECT_EQ(FromFile(), 1000);
  EXPECT_THAT(test::ErrorOf([&] { HandOverTo(false); }), HasSubstr("it is another branch's"));
  EXPECT_EQ(FromFile(), 1001);
  EXPECT_EQ(HandOverTo(true), HandOver::kDone);
  EXPECT_EQ(FromFile(), 0);
  EXPECT_EQ(numbers.Issue("PR00001"), 1002);
  EXPECT_EQ(HandOverTo(false), HandOver::kDone);
  EXPECT_EQ(FromFile(), 1003);
  session_.database.OpenDatabase();
  EXPECT_EQ(session_.database.LookupText("[value]", "custom_fields",
                                         CounterCondition("New building"), ""),
            "1000");
  EXPECT_EQ(session_.database.LookupText("[value]", "custom_fields", "where parenttype = 0", ""),
            "");

  // Another server's numbers are not ours to end.
  HandOverTo(true);
  server_.Run("numbers",
              "delete from rental.hand_over; update rental.branch set counters_here = false");
  EXPECT_THAT(test::ErrorOf([&] { HandOverTo(true); }), HasSubstr("to another server"));
  EXPECT_THAT(test::ErrorOf([&] { HandOverTo(false); }), HasSubstr("to another server"));
}

TEST_F(ReceiptCounters, OfACopyOfAnOlderHandOverAreTheServersOnlyWhileItIssues) {
  const std::filesystem::path copy = machine_.ProgramFolder() / "copy.mdb";
  const auto put_back = [&] {
    std::filesystem::copy_file(copy, File(), std::filesystem::copy_options::overwrite_existing);
  };
  FromFile();
  HandOverTo(true);
  std::filesystem::copy_file(File(), copy);
  HandOverTo(false);
  EXPECT_EQ(FromFile(), 1001);
  // What the file has issued since is in the copy no more than on the server.
  put_back();
  EXPECT_THAT(test::ErrorOf([&] { HandOverTo(true); }), HasSubstr("put a later copy back"));
  EXPECT_THAT(test::ErrorOf([&] { HandOverTo(false); }), HasSubstr("put a later copy back"));
  EXPECT_EQ(FromFile() + FromServer(), 0);

  machine_.InstallSampleDatabase();
  HandOverTo(true);
  EXPECT_EQ(FromServer(), 1001);
  put_back();
  EXPECT_EQ(HandOverTo(true), HandOver::kDone);
  EXPECT_EQ(HandOverTo(true), HandOver::kAlready);
  EXPECT_EQ(FromServer(), 1002);
  // A hand-back that is cut short anywhere leaves nobody with lower numbers.
  for (int step = 0;; ++step) {
    put_back();
    const bool died = Dies(false, step);
    const int next = FromServer() + FromFile();
    EXPECT_TRUE(next == 0 || next > 1002) << step;
    if (!died) break;
    HandOverTo(false);
    HandOverTo(true);
  }
}

}  // namespace
}  // namespace tenora
