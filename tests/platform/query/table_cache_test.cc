// What is kept between statements and between opens.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;

constexpr std::string_view kFirstName = "select name from tenancy where reference = 'T00001'";

class ChangedFile : public ::testing::Test {
 protected:
  ChangedFile() : path_(folder_ / "property.mdb") {
    std::filesystem::copy_file(test::SampleDatabase(), path_);
    std::filesystem::permissions(path_, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
  }

  // Another program's write in place: same size, same inode.
  void Rename(std::string_view from, std::string_view to) {
    std::string content = ReadWholeFile(path_);
    const std::size_t at = content.find(from);
    ASSERT_NE(at, std::string::npos);
    content.replace(at, from.size(), to);
    const std::filesystem::file_time_type before = std::filesystem::last_write_time(path_);
    std::FILE* const file = std::fopen(path_.c_str(), "r+b");
    ASSERT_EQ(std::fwrite(content.data(), 1, content.size(), file), content.size());
    std::fclose(file);
    // Even if the file system's clock has not advanced since.
    std::filesystem::last_write_time(path_, before + std::chrono::nanoseconds(1000000));
  }

  test::ScratchFolder folder_;
  std::filesystem::path path_;
  std::unique_ptr<Workspace> workspace_ = Workspace::Create();
};

TEST_F(ChangedFile, IsSeenAtTheNextOpen) {
  const auto before = workspace_->OpenDatabase(path_);
  EXPECT_THAT(RowsOf(*before, kFirstName), ElementsAre("Noor Whaanga"));
  Rename("Noor Whaanga", "Nora Whaanga");
  const auto after = workspace_->OpenDatabase(path_);
  EXPECT_THAT(RowsOf(*after, kFirstName), ElementsAre("Nora Whaanga"));
  EXPECT_THAT(RowsOf(*before, kFirstName), ElementsAre("Noor Whaanga"))
      << "an open database keeps its own state";
}

// Another program, which ignores our locks, writes at one of these moments.
TEST_F(ChangedFile, IsFollowedThroughOurOwnCommits) {
  enum Moment { kNever, kBeforeTheTransaction, kWithinTheTransaction, kRightAfterTheCommit };
  constexpr std::string_view kNames[] = {"Noor Whaanga", "Nora Whaanga"};
  const auto rename = [&](int name) {
    const std::string place = std::to_string(ReadWholeFile(path_).find(kNames[1 - name]));
    const test::ProcessResult result = test::RunProcess(
        {"sh", "-c", "printf %s \"$1\" | dd of=\"$2\" bs=1 seek=\"$3\" conv=notrunc status=none",
         "sh", std::string(kNames[name]), path_.string(), place});
    ASSERT_EQ(result.status, 0) << result.errors;
  };
  // Long enough ago that a further write shows another time.
  std::filesystem::last_write_time(path_,
                                   std::filesystem::last_write_time(path_) - std::chrono::hours(1));
  int name = 0, value = 0;
  for (const Moment moment :
       {kNever, kRightAfterTheCommit, kRightAfterTheCommit, kNever, kWithinTheTransaction, kNever,
        kBeforeTheTransaction, kRightAfterTheCommit}) {
    const auto database = workspace_->OpenDatabase(path_);
    EXPECT_THAT(RowsOf(*database, kFirstName), ElementsAre(kNames[name]));
    if (moment == kBeforeTheTransaction) rename(name = 1 - name);
    database->BeginTrans();
    const std::string counter = std::to_string(++value);
    database->Execute("update property set details = '" + counter + "' where code = 'PR00001'");
    if (moment == kWithinTheTransaction) rename(name = 1 - name);
    database->CommitTrans();
    if (moment == kRightAfterTheCommit) rename(name = 1 - name);
    const auto next = workspace_->OpenDatabase(path_);
    EXPECT_THAT(RowsOf(*next, kFirstName), ElementsAre(kNames[name])) << moment;
    EXPECT_THAT(RowsOf(*next, "select details from property where code = 'PR00001'"),
                ElementsAre(counter));
  }
}

// A write that hides its time shows which tables are read again.
TEST_F(ChangedFile, IsReadAgainOnlyWhereOurOwnCommitChangedIt) {
  std::filesystem::last_write_time(path_,
                                   std::filesystem::last_write_time(path_) - std::chrono::hours(1));
  const auto database = workspace_->OpenDatabase(path_);
  RowsOf(*database, kFirstName);
  RowsOf(*database, "select details from property");
  database->Execute("update property set details = 'new' where code = 'PR00001'");
  const auto time = std::filesystem::last_write_time(path_);
  Rename("Noor Whaanga", "Nora Whaanga");
  std::filesystem::last_write_time(path_, time);
  const auto next = workspace_->OpenDatabase(path_);
  EXPECT_THAT(RowsOf(*next, kFirstName), ElementsAre("Noor Whaanga"));
  EXPECT_THAT(RowsOf(*next, "select details from property where code = 'PR00001'"),
              ElementsAre("new"));
}

TEST_F(ChangedFile, MayBeReplacedByAnother) {
  const auto before = workspace_->OpenDatabase(path_);
  std::filesystem::remove(path_);
  EXPECT_THROW(workspace_->OpenDatabase(path_), RuntimeError);
  std::filesystem::copy_file(test::SampleDatabase(), path_);
  Rename("Noor Whaanga", "Nora Whaanga");
  EXPECT_THAT(RowsOf(*workspace_->OpenDatabase(path_), kFirstName), ElementsAre("Nora Whaanga"));
}

TEST_F(ChangedFile, LeavesARunningRecordSetAlone) {
  std::unique_ptr<Recordset> rows;
  {
    const auto database = workspace_->OpenDatabase(path_);
    rows = database->OpenRecordset("select reference, name from tenancy", kForwardOnly, kReadOnly);
  }
  Rename("Noor Whaanga", "Nora Whaanga");
  workspace_->OpenDatabase(path_);
  workspace_.reset();
  EXPECT_EQ(rows->Field("name"), Value(std::string("Noor Whaanga")));
  std::size_t count = 0;
  for (; !rows->EndOfFile(); rows->MoveNext()) ++count;
  EXPECT_EQ(count, 42u);
}

TEST(TableCache, BindsEachStatementsOwnLiterals) {
  SampleAgency agency;
  const auto name = [&](const std::string& code) {
    return agency.Rows("select code from property where code = '" + code + "'");
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(name("PR00001"), ElementsAre("PR00001"));
    EXPECT_THAT(name("PR00002"), ElementsAre("PR00002"));
    EXPECT_THAT(agency.Rows("select top 1 code from property order by 1"), ElementsAre("PR00001"));
    EXPECT_THAT(agency.Rows("select top 2 code from property order by 1"),
                ElementsAre("PR00001", "PR00002"));
    EXPECT_EQ(agency.ErrorNumber("select code from property where code = 5"), 3464);
  }
  // Two record sets of one plan run side by side.
  const auto open = [&](const char* type) {
    return agency.database().OpenRecordset(
        std::string("select gl_code from glcodes where type = ") + type, kForwardOnly, kReadOnly);
  };
  const auto first = open("201"), second = open("203");
  EXPECT_EQ(second->Field(std::size_t{0}), Value(std::string("INSURE")));
  first->MoveNext();
  EXPECT_EQ(first->Field(std::size_t{0}), Value(std::string("REPAIR")));
}

TEST(TableCache, LooksRowsUpWhateverTheTypeOfTheColumn) {
  SampleAgency agency;
  const struct {
    const char* sql;
    const char* count;
  } kCases[] = {
      {"select count(*) from revenues where recordnumber = 17", "1"},
      {"select count(*) from revenues where recordnumber = 17.0", "1"},
      {"select count(*) from revenues where recordnumber = 17.5", "0"},
      {"select count(*) from revenues where tenant_code = 't00001  '", "103"},
      {"select count(*) from revenues where tenant_code = null", "0"},
      {"select count(*) from tenancy where closed_yn = true", "5"},
      {"select count(*) from tenancy where closed_yn = 1", "0"},
      {"select count(*) from revenues where date = #11/14/2026# and amount = 27", "1"},
      {"select count(*) from revenues a inner join revenues b on a.recordnumber = b.recordnumber",
       "1646"},
      {"select count(*) from tenancy where [property code] in ('pr00022', 'PR00020')", "8"},
  };
  for (const auto& c : kCases) EXPECT_THAT(agency.Rows(c.sql), ElementsAre(c.count)) << c.sql;
}

}  // namespace
}  // namespace tenora::query
