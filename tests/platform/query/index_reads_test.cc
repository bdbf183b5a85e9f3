// Rows read through the indexes of the file: the same as from tables in memory, also while others
// write.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/access/file_builder.h"
#include "platform/query/cache/file_reader.h"
#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

// A copy of the sample agency. Its revenues, rent periods and custom fields are large enough not to
// be read into memory at once.
class IndexReads : public ::testing::Test {
 protected:
  IndexReads() {
    std::filesystem::copy_file(test::SampleDatabase(), path_);
    std::filesystem::permissions(path_, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
  }

  // In a workspace of its own, which has read nothing yet.
  std::vector<std::string> Fresh(const std::string& sql) const {
    return RowsOf(*Workspace::Create()->OpenDatabase(path_), sql);
  }

  test::ScratchFolder folder_;
  std::filesystem::path path_ = folder_ / "property.mdb";
};

TEST_F(IndexReads, GiveTheRowsOfTheTableInItsOrder) {
  const struct {
    const char* sql;
    const char* path;  // how its first table is read
  } kCases[] = {
      {"select * from revenues where tenant_code = 'T00001'", "revenues|index tenant_code"},
      {"select * from revenues where tenant_code = 't00002  ' and amount > 100",
       "revenues|index tenant_code"},
      {"select * from revenues where tenant_code = 'T00001' and recordnumber = 17",
       "revenues|index PrimaryKey"},
      {"select * from revenues where recordnumber in (17, 99999999, -5, 3, 17)",
       "revenues|index PrimaryKey"},
      {"select * from revenues where recordnumber = 17.5", "revenues|index PrimaryKey"},
      {"select * from revenues where recordnumber = 99999999999", "revenues|index PrimaryKey"},
      {"select * from revenues where tenant_code = null", "revenues|index tenant_code"},
      {"select * from revenues where tenant_code = ''", "revenues|index tenant_code"},
      {"select * from revenues where tenant_code = '\xe6\x97\xa5'", "revenues|index tenant_code"},
      {"select * from revenues where tenant_code = 'T00001 and far longer than its column'",
       "revenues|index tenant_code"},
      {"select * from revenues where recordnumber = 17 or tenant_code = 'T00002'", "revenues|"},
      {"select * from revenues where recordnumber between 17.5 and 40",
       "revenues|range of index PrimaryKey"},
      {"select * from revenues where recordnumber >= -99999999999 and recordnumber < 3",
       "revenues|range of index PrimaryKey"},
      {"select * from revenues where recordnumber > 5", "revenues|range of index PrimaryKey"},
      {"select * from revenues where recordnumber > null", "revenues|range of index PrimaryKey"},
      {"select * from revenues where tenant_code <= 't00001  '",
       "revenues|range of index tenant_code"},
      {"select * from revenues where tenant_code between 'T00003' and 'T00002'",
       "revenues|range of index tenant_code"},
      {"select * from revenues where comment = 'x'", "revenues|"},
      {"select * from rent_periods where tenant_code = 'T00003' order by period_from desc",
       "rent_periods|index"},
      {"select sum(amount)+0, max([property code]) from revenues where tenant_code = 'T00001'",
       "revenues|index tenant_code"},
      {"select reference, (select max(date) from revenues where tenant_code = reference) from "
       "tenancy where reference < 'T00005'",
       "tenancy|"},
      {"select r.recordnumber, p.period_from from revenues r left join rent_periods p on "
       "p.tenant_code = r.tenant_code where r.recordnumber = 17",
       "revenues|index PrimaryKey"},
  };
  const auto workspace = Workspace::Create();
  const auto in_memory = workspace->OpenDatabase(path_);
  for (const char* table : {"revenues", "rent_periods"})
    RowsOf(*in_memory, std::string("select * from ") + table);
  for (const auto& c : kCases) {
    EXPECT_EQ(Fresh(c.sql), RowsOf(*in_memory, c.sql)) << c.sql;
    EXPECT_THAT(Fresh(std::string("explain ") + c.sql).at(0), StartsWith(c.path)) << c.sql;
  }
}

TEST_F(IndexReads, GiveWayToTheTableWhenThereAreMany) {
  const auto workspace = Workspace::Create();
  const auto database = workspace->OpenDatabase(path_);
  const std::string sql = "select sum(amount) from revenues where tenant_code = ";
  const std::string explain = "explain " + sql + "'T00001'";
  EXPECT_THAT(RowsOf(*database, explain).at(0), StartsWith("revenues|index tenant_code"));
  int look_ups = 0;
  while (look_ups < 100 && RowsOf(*database, explain).at(0).starts_with("revenues|index")) {
    RowsOf(*database, sql + "'T0000" + std::to_string(look_ups++ % 9) + "'");
  }
  EXPECT_GT(look_ups, 2) << "a letter's few look-ups do not read the table";
  EXPECT_LT(look_ups, 30) << "a batch reads it once";
  EXPECT_THAT(RowsOf(*database, explain).at(0), StartsWith("revenues|memory"));
}

// Each change moves money from one payment of a tenancy to another: their sum is always the same.
TEST_F(IndexReads, SeeEachTransactionOfAnotherProgramWholeOrNotAtAll) {
  const std::string sum = "select sum(amount) from revenues where tenant_code = 'T00001'";
  const std::vector<std::string> before = Fresh(sum);
  constexpr int kChanges = 40;
  std::jthread writer([&] {
    const auto workspace = Workspace::Create();
    for (int i = 1; i <= kChanges; ++i) {
      const auto database = workspace->OpenDatabase(path_);
      const std::string step = std::to_string(i);
      database->BeginTrans();
      for (const char* change : {"amount = amount - ", "amount = amount + "}) {
        const char* const which = change[16] == '-' ? "min" : "max";
        const auto row = RowsOf(*database, std::string("select ") + which +
                                               "(recordnumber) from revenues where tenant_code = "
                                               "'T00001'");
        const auto amount =
            RowsOf(*database, "select amount from revenues where recordnumber = " + row.at(0));
        const double moved = std::stod(amount.at(0)) + (change[16] == '-' ? -i : i);
        database->Execute("update revenues set amount = " + std::to_string(moved) +
                          " where recordnumber = " + row.at(0));
      }
      database->CommitTrans();
    }
  });
  const auto workspace = Workspace::Create();
  for (int i = 0; i < 100; ++i) {
    const auto database = workspace->OpenDatabase(path_);
    ASSERT_EQ(RowsOf(*database, sum), before) << i;
  }
  writer.join();
  EXPECT_EQ(Fresh(sum), before);
}

// Who does not use locks can write in the middle of a reading.
TEST_F(IndexReads, StartAgainAfterAWriteWithoutLocks) {
  FileReader reader(path_, access::ReadFileState(path_), ReadLocking::kLock);
  int readings = 0;
  const auto read = [&](bool writes) {
    return reader.Read(10, [&](const access::DatabaseFile& file) {
      EXPECT_NE(file.FindTable("revenues"), nullptr);
      if (++readings <= 2 && writes) {
        std::filesystem::last_write_time(
            path_, std::filesystem::last_write_time(path_) - std::chrono::seconds(1));
        if (readings == 2) throw RuntimeError(3049, "half a change", "DAO.Recordset");
      }
      return readings;
    });
  };
  EXPECT_EQ(read(true), 3);
  EXPECT_EQ(reader.opened(), 3);
  EXPECT_EQ(read(false), 4);
  EXPECT_EQ(reader.opened(), 3) << "an unchanged file is not opened again";
}

// Ranges in a column of each type, ascending and descending: times before the day from which days
// count run backwards, singles are compared by their digits, texts by their order.
TEST(IndexRanges, GiveTheRowsOfTheTableForEveryType) {
  const test::ScratchFolder folder;
  const std::filesystem::path path = folder / "ranges.mdb";
  test::FileBuilder builder(1);
  test::BuiltTable table;
  table.columns = {{"id", 4, 0, true, 0, 4},      {"day", 8, 1, true, 4, 8},
                   {"exact", 7, 2, true, 12, 8},  {"approx", 6, 3, true, 20, 4},
                   {"money", 5, 4, true, 24, 8},  {"small", 3, 5, true, 32, 2},
                   {"guid", 15, 6, true, 34, 16}, {"word", 10, 7, false, 0, 40, 2, 9, 4},
                   {"more", 10, 8, false, 1, 500}};
  table.max_columns = 9;
  table.variable_columns = 2;
  for (unsigned i = 0; i < 8; ++i)
    table.indexes.push_back(
        {.name = "by_" + table.columns[i].name, .columns = {{i, i % 2 == 1}}, .has_tree = true});
  table.indexes[6].columns[0].second = false;
  const std::uint32_t definition = builder.NewPage();
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("kinds", definition);
  WriteWholeFile(path, builder.Finish());
  const auto workspace = Workspace::Create();
  const auto in_memory = workspace->OpenDatabase(path);
  const char* const kWords[] = {"Ōtara", "otara", "O'Brien", "OBrien", "co-op", "coop", "Zoë"};
  constexpr int kRows = 400;
  in_memory->BeginTrans();
  for (int i = 0; i < kRows; ++i) {
    const Date day = Date::FromCalendar(1899, 9, 21).AddDays(i / 2);
    const std::string n = std::to_string(i);
    in_memory->Execute("insert into kinds values (" + n + ", #" + FormatDate(day, "yyyy-mm-dd") +
                       (i % 2 == 0 ? "" : " 18:30:15") + "#, " + std::to_string(i * 0.25 - 10) +
                       ", " + std::to_string(i * 0.1 - 5) + ", " + std::to_string(i - 200) +
                       ".25, " + std::to_string(i % 70) + ", '{00000000-0000-0000-0000-" +
                       std::to_string(100000000000 + i) + "}', " +
                       (i % 50 == 49 ? "null" : "'" + ReplaceAll(kWords[i % 7], "'", "''") + "'") +
                       ", '" + std::string(200, 'x') + "')");
  }
  in_memory->CommitTrans();
  RowsOf(*in_memory, "select * from kinds");
  const struct {
    const char* where;
    const char* path;
    std::size_t rows;
  } kCases[] = {
      {"day = #1899-12-28 18:30:15#", "range of index by_day", 1},
      {"day between #1899-12-28 18:30:15# and #1900-01-01#", "range of index by_day", 8},
      {"day > #1899-12-29# and day < #1899-12-31#", "range of index by_day", 3},
      {"day >= #1900-04-06#", "range of index by_day", 6},
      {"exact = 0", "range of index by_exact", 1},
      {"exact > 88.9 and exact <= 89.5", "range of index by_exact", 3},
      {"exact < -9.5", "range of index by_exact", 2},
      {"approx = 0.1", "range of index by_approx", 1},
      {"approx between -0.2 and 0.2", "range of index by_approx", 5},
      {"money >= -3 and money < 2.25", "range of index by_money", 4},
      {"money > ccur(196.25)", "range of index by_money", 3},
      {"small > 68 and small < 99999", "range of index by_small", 5},
      {"small < -99999", "range of index by_small", 0},
      {"guid = '{00000000-0000-0000-0000-100000000017}'", "index by_guid", 1},
      {"guid = '00000000-0000-0000-0000-100000000017'", "index by_guid", 0},
      {"word >= 'obrien' and word <= \"O'Brien\"", "range of index by_word", 112},
      {"word > 'coop' and word < 'o'", "range of index by_word", 56},
      {"word > 'z'", "range of index by_word", 56},
      {"id between 100 and 103", "range of index by_id", 4},
  };
  for (const auto& c : kCases) {
    const std::string sql = std::string("select * from kinds where ") + c.where;
    const auto fresh = Workspace::Create()->OpenDatabase(path);
    EXPECT_THAT(RowsOf(*fresh, "explain " + sql).at(0), StartsWith(std::string("kinds|") + c.path))
        << sql;
    const std::vector<std::string> rows = RowsOf(*fresh, sql);
    EXPECT_EQ(rows.size(), c.rows) << sql;
    EXPECT_EQ(rows, RowsOf(*in_memory, sql)) << sql;
  }
}

// A table just beyond the size up to which a pass over it keeps it in memory.
class LargeTable : public ::testing::Test {
 protected:
  static constexpr std::uint32_t kPages = 8200, kRowsOfPage = 2;

  static void SetUpTestSuite() {
    folder_ = new test::ScratchFolder();
    test::FileBuilder builder(1);
    test::BuiltTable table{
        {{"id", 4, 0, true, 0, 4, 3}, {"code", 10, 1, false, 0, 20}}, 2, 1, {}, 0, {}, true};
    const std::uint32_t definition = builder.NewPage();
    for (std::uint32_t i = 0; i < kPages; ++i) table.data_pages.push_back(builder.NewPage());
    for (std::uint32_t i = 0; i < kPages; ++i) {
      std::vector<test::BuiltRow> rows;
      for (std::uint32_t row = 0; row < kRowsOfPage; ++row) {
        const std::uint32_t id = i * kRowsOfPage + row;
        const std::string code = builder.Text("c" + std::to_string(id % 100));
        rows.push_back({builder.Row({true, true}, test::Stored32(id), {code})});
      }
      builder.PutRows(table.data_pages[i], definition, rows);
    }
    table.row_count = kPages * kRowsOfPage;
    builder.PutDefinition(definition, table);
    builder.AddToCatalogue("large", definition);
    WriteWholeFile(*folder_ / "large.mdb", builder.Finish());
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static inline test::ScratchFolder* folder_ = nullptr;
  std::unique_ptr<Workspace> workspace_ = Workspace::Create();
  std::unique_ptr<EngineDatabase> database_ = workspace_->OpenDatabase(*folder_ / "large.mdb");
};

TEST_F(LargeTable, IsReadInOnePassUnlessItIsReadAgain) {
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"select count(*), max(id), max(code) from large", {"16400|16399|c99"}},
      {"select count(*) from large where code = 'C7 '", {"164"}},
      {"select id, code from large where id = 16399", {"16399|c99"}},
      {"select top 2 id from large order by id desc", {"16399", "16398"}},
      {"select a.id from large a inner join large b on a.id = b.id + 1 where b.code = 'c1' and "
       "b.id "
       "< 200",
       {"2", "102"}},
  };
  for (const auto& c : kCases) {
    const auto fresh = Workspace::Create()->OpenDatabase(*folder_ / "large.mdb");
    EXPECT_THAT(RowsOf(*fresh, std::string("explain ") + c.sql).at(0), StartsWith("large|one pass"))
        << c.sql;
    EXPECT_EQ(RowsOf(*fresh, c.sql), c.rows) << c.sql;
    EXPECT_EQ(RowsOf(*fresh, c.sql), c.rows) << c.sql;
    EXPECT_THAT(RowsOf(*fresh, std::string("explain ") + c.sql).at(0), StartsWith("large|memory"))
        << c.sql;
  }
}

TEST_F(LargeTable, LocksNobodyOutBetweenTwoRows) {
  const auto rows = database_->OpenRecordset("select id from large", kForwardOnly, kReadOnly);
  const auto other = Workspace::Create()->OpenDatabase(*folder_ / "large.mdb");
  EXPECT_EQ(other->Execute("update large set id = -1 where id = 16000"), 1);
  std::int64_t count = 0, changed = 0;
  for (; !rows->EndOfFile(); rows->MoveNext(), ++count) {
    if (rows->Field("id") == Value(std::int64_t{-1})) ++changed;
  }
  EXPECT_EQ(count, kPages * kRowsOfPage);
  EXPECT_EQ(changed, 1);
  EXPECT_EQ(other->Execute("update large set id = 16000 where id = -1"), 1);
}

}  // namespace
}  // namespace tenora::query
