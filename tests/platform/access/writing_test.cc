// Inserting, updating and deleting rows, verified by this reader, by others and by the checker.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

#include "platform/access/file_builder.h"
#include "platform/access/other_readers.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/simulated_disk.h"
#include "platform/access/writing_support.h"

namespace tenora::test {
namespace {

using access::ColumnValue;
using access::DatabaseFile;
using access::RowId;
using access::WritableTable;
using access::WriteTransaction;

class WritingToTheSample : public testing::Test {
 protected:
  WritingToTheSample() { std::filesystem::copy_file(SampleDatabase(), path_); }

  // All rows of a table as text, sorted.
  std::vector<std::string> Rows(const std::string& table) const {
    std::vector<std::string> rows;
    const auto database = DatabaseFile::Open(path_);
    const access::Table* found = database->FindTable(table);
    for (const auto cursor = found->Rows(); cursor->Next();) {
      std::string& row = rows.emplace_back();
      for (std::size_t i = 0; i < found->columns().size(); ++i) {
        row += TextOf(cursor->Field(i)) + "|";
      }
    }
    EXPECT_EQ(static_cast<std::size_t>(found->row_count()), rows.size());
    std::ranges::sort(rows);
    return rows;
  }

  ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_ / "property.mdb";
};

TEST_F(WritingToTheSample, RefusesWhatTheEngineRefusesAndContinues) {
  const auto transaction = WriteTransaction::Begin(path_);
  WritableTable& owner = transaction->Table("owner");
  const Value taken = owner.Read(owner.All().front())[0];
  const RowId last = owner.All().back();
  const struct {
    int number;
    std::vector<ColumnValue> values;
  } cases[] = {
      {3022, {{"Code", taken}}},
      {3058, {{"name", Text("no code")}}},
      {3163, {{"Code", std::string(21, 'c')}}},
      {3421, {{"Code", Text("X")}, {"fee_percent", Text("much")}}},
      {3349, {{"Code", Text("X")}, {"fee_percent", 1e300}}},
      {3349, {{"Code", Text("X")}, {"fee_percent", std::nan("")}}},
      {3349, {{"Code", Text("X")}, {"fee_value", HUGE_VAL}}},
      {3127, {{"Code", Text("X")}, {"no such column", Number(1)}}},
      {3421, {{"Code", Text("\xFF")}}},
      {3073, {{"Code", Text("\xE6\x97\xA5\xE6\x9C\xAC")}}},  // its key is not known
  };
  for (const auto& [number, values] : cases) {
    EXPECT_EQ(NumberOf([&] { owner.Insert(values); }), number);
  }
  EXPECT_EQ(NumberOf([&] { owner.Update(last, {{"Code", taken}}); }), 3022);
  EXPECT_EQ(NumberOf([&] { owner.Update({last.page, 200}, {}); }), 3167);
  EXPECT_EQ(NumberOf([&] { transaction->Table("MSysObjects"); }), 3073);
  EXPECT_EQ(NumberOf([&] { transaction->Table("nothing"); }), 3078);
  owner.Insert({{"Code", Text("AFTER")}});
  transaction->Commit();
  EXPECT_EQ(Rows("owner").size(), 13U);
  ExpectHealthy(path_);
}

TEST_F(WritingToTheSample, StoresAndFreesLongValuesOfEverySize) {
  const std::size_t sizes[] = {0, 1, 64, 65, 2000, 2040, 2041, 9000, 40000, 1 << 20};
  for (int round = 0; round < 3; ++round) {
    const auto transaction = WriteTransaction::Begin(path_);
    WritableTable& owner = transaction->Table("owner");
    for (const std::size_t size : sizes) {
      const std::string code = std::to_string(size);
      const auto rows = owner.Find({{"Code", code}});
      const std::string notes(size, static_cast<char>('a' + round));
      if (rows.empty()) {
        owner.Insert({{"Code", code}, {"notes", notes}});
      } else {
        owner.Update(rows[0], {{"notes", notes}});
      }
      EXPECT_EQ(owner.Read(owner.Find({{"Code", code}}).at(0))[19], Value(notes)) << size;
    }
    transaction->Commit();
    ExpectHealthy(path_);
  }
  const auto size = std::filesystem::file_size(path_);
  {
    const auto transaction = WriteTransaction::Begin(path_);
    WritableTable& owner = transaction->Table("owner");
    owner.Delete(owner.Find({{"Code", Text("40000")}}).at(0));
    owner.Insert({{"Code", Text("again")}, {"notes", std::string(40000, 'z')}});
    transaction->Commit();
  }
  EXPECT_EQ(std::filesystem::file_size(path_), size) << "freed pages are used again";
  ExpectHealthy(path_);
}

struct OtherReader {
  const char* name;
  std::string (*why_absent)();
  void (*expect_same)(const DatabaseFile&, const access::Table&);
};

class ReadByOthers : public WritingToTheSample, public testing::WithParamInterface<OtherReader> {};

TEST_P(ReadByOthers, IsTheSameAfterEachKindOfWrite) {
  if (const std::string why = GetParam().why_absent(); !why.empty()) GTEST_SKIP() << why;
  const auto set = [](WritableTable& table, const char* column, auto value_of) {
    int i = 0;
    for (const RowId row : table.All()) table.Update(row, {{column, value_of(i++)}});
  };
  const struct {
    const char* kind;
    const char* table;
    std::function<void(WritableTable&)> write;
  } cases[] = {
      {"rows rewritten in place", "tenancy",
       [&](auto& t) { set(t, "closed_yn", [](int i) { return i % 3 == 0; }); }},
      {"rows that grow and move", "property",
       [&](auto& t) { set(t, "address1", [](int i) { return std::string(60, "ab"[i % 2]); }); }},
      {"rows that shrink again", "property",
       [&](auto& t) { set(t, "address1", [](int i) { return std::to_string(i); }); }},
      {"text of every script", "owner",
       [&](auto& t) {
         set(t, "street1", [](int i) {
           return Text(i % 2 == 0 ? "\xE6\x97\xA5\xE6\x9C\xAC \xC4\x80\xC3\xBF"
                                  : "\"Quote'd\", \r\n\ttab");
         });
       }},
      {"long values of every size", "owner",
       [&](auto& t) {
         set(t, "notes", [](int i) {
           constexpr std::size_t kSizes[] = {0, 63, 64, 65, 2000, 2040, 65536, 150000};
           return std::string(kSizes[static_cast<std::size_t>(i) % std::size(kSizes)], 'n');
         });
       }},
      {"nulls", "owner", [&](auto& t) { set(t, "notes", [](int) { return Null(); }); }},
      {"every other row deleted", "revenues",
       [&](auto& t) {
         int i = 0;
         for (const RowId row : t.All()) {
           if (i++ % 2 == 0) t.Delete(row);
         }
       }},
      {"all rows deleted", "custom_fields",
       [&](auto& t) {
         for (const RowId row : t.All()) t.Delete(row);
       }},
      {"rows into the table that was emptied", "custom_fields",
       [&](auto& t) {
         for (int i = 0; i < 500; ++i) {
           t.Insert({{"parentcode", "P" + std::to_string(i)},
                     {"parenttype", Number(i % 3)},
                     {"fieldcode", Text("Nxt")},
                     {"value", std::to_string(i)}});
         }
       }},
      {"dates before and after 1900", "rentchanges",
       [&](auto& t) {
         for (const int year : {1234, 1899, 1900, 2037}) {
           t.Insert({{"tenantcode", std::to_string(year)},
                     {"changedate", Date::FromCalendar(year, 12, 31, 23, 59, 58)},
                     {"changevalue", Currency::FromTenThousandths(-1)}});
         }
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.kind);
    const auto transaction = WriteTransaction::Begin(path_);
    c.write(transaction->Table(c.table));
    transaction->Commit();
    ExpectHealthy(path_);
    const auto database = DatabaseFile::Open(path_);
    GetParam().expect_same(*database, *database->FindTable(c.table));
  }
  const auto database = DatabaseFile::Open(path_);
  for (const std::string& name : database->TableNames()) {
    GetParam().expect_same(*database, *database->FindTable(name));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Readers, ReadByOthers,
    testing::Values(OtherReader{"MdbExport",
                                [] {
                                  return std::string(HasMdbTools() ? ""
                                                                   : "mdb-export is not installed");
                                },
                                ExpectSameAsMdbExport},
                    OtherReader{"MdbReader", WhyNoMdbReader, ExpectSameAsMdbReader}),
    [](const auto& suite) { return std::string(suite.param.name); });

// The most columns that a table can have, and rows up to the longest possible.
TEST(TheWidestTable, StoresRowsUpToTheLongestThatFit) {
  FileBuilder builder(1);
  BuiltTable table;
  for (unsigned i = 0; i < 255; ++i) {
    table.columns.push_back({"c" + std::to_string(i), i % 2 == 0 ? 10 : 1, i, i % 2 != 0, i / 2,
                             i % 2 == 0 ? 510U : 1U, 2, 9, 4});
    if (i % 2 != 0) table.columns.back().place = 0;
  }
  builder.AddTable("wide", table);
  const ScratchDatabase file(builder.Finish());
  std::map<std::size_t, int> outcomes;
  {
    const auto transaction = WriteTransaction::Begin(file.path());
    WritableTable& wide = transaction->Table("wide");
    RowId row = wide.Insert({});
    // Text of the first eight columns, two bytes a letter.
    for (std::size_t letters = 1850; letters <= 1930; ++letters) {
      std::vector<ColumnValue> values = {{"c1", true}, {"c253", true}, {"c254", Text("end")}};
      for (std::size_t left = letters, i = 0; left > 0; i += 2) {
        const std::size_t part = std::min<std::size_t>(left, 255);
        values.push_back({"c" + std::to_string(i), std::string(part, 'w')});
        left -= part;
      }
      outcomes[letters] = NumberOf([&] { wide.Update(row, values); });
    }
    transaction->Commit();
  }
  const auto refused = std::ranges::find_if(outcomes, [](const auto& o) { return o.second != 0; });
  ASSERT_NE(refused, outcomes.begin());
  ASSERT_NE(refused, outcomes.end());
  EXPECT_TRUE(std::all_of(refused, outcomes.end(), [](const auto& o) { return o.second == 3047; }));
  ExpectHealthy(file.path());
  const auto database = DatabaseFile::Open(file.path());
  if (HasMdbTools()) ExpectSameAsMdbExport(*database, *database->FindTable("wide"));
  if (WhyNoMdbReader().empty()) ExpectSameAsMdbReader(*database, *database->FindTable("wide"));
}

TEST(ATransaction, ReadsEachDefinitionOnce) {
  const std::filesystem::path path = "/simulated/property.mdb";
  const std::string bytes = ReadWholeFile(SampleDatabase());
  const auto* start = reinterpret_cast<const std::byte*>(bytes.data());
  SimulatedDisk disk;
  disk.Put(path, {start, start + bytes.size()});
  WriteTransaction::Options options;
  options.storage = &disk;
  const auto transaction = WriteTransaction::Begin(path, options);
  for (const char* value : {"1", "2", "3"}) {
    WritableTable& fields = transaction->Table("custom_fields");
    fields.Update(fields.All().front(), {{"value", Text(value)}});
  }
  transaction->Commit();
  const auto file = access::PageFile::Open(SampleDatabase());
  const access::SystemCatalogue catalogue(file);
  const std::uint64_t page_size = file->layout().page_size;
  EXPECT_EQ(disk.ReadsAt(access::kCataloguePage * page_size), 1);
  EXPECT_EQ(disk.ReadsAt(catalogue.Find("custom_fields")->definition_page * page_size), 1);
}

TEST(AnAccess97File, IsRefusedForWriting) {
  const ScratchDatabase file(FileBuilder(0).Finish());
  EXPECT_EQ(NumberOf([&] { WriteTransaction::Begin(file.path()); }), 3027);
}

}  // namespace
}  // namespace tenora::test
