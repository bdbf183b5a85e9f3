// Many changes to a table with indexes, verified by a simple model, another reader and the checker.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "platform/access/file_builder.h"
#include "platform/access/other_readers.h"
#include "platform/access/writing_support.h"
#include "support/slow_build.h"

namespace tenora::test {
namespace {

using access::ColumnValue;
using access::DatabaseFile;
using access::RowId;
using access::WritableTable;
using access::WriteTransaction;

// A new database whose table has every kind of index.
std::string IndexedDatabase() {
  FileBuilder builder(1);
  const std::uint32_t definition = builder.NewPage(), data = builder.NewPage();
  const auto text = [](const char* name, unsigned number, unsigned place) {
    return BuiltColumn{name, 10, number, false, place, 80, 0x02, 9, 4};
  };
  BuiltTable table;
  table.columns = {{"id", 4, 0, true, 0, 4, 0x06},
                   text("code", 1, 0),
                   text("group", 2, 1),
                   {"amount", 5, 3, true, 4, 8},
                   {"at", 8, 4, true, 12, 8},
                   {"flag", 1, 5, true, 0, 1},
                   {"notes", 12, 6, false, 2},
                   {"must", 3, 7, true, 20, 2, 0}};
  table.max_columns = 8;
  table.variable_columns = 3;
  table.data_pages = {data};
  table.indexes = {{"PrimaryKey", {{0, false}}, true, true, false, true},
                   {"by_code", {{1, false}}, true, false, false, true},
                   {"by_group", {{2, false}, {3, true}, {1, true}}, false, false, false, true},
                   {"by_date", {{4, true}, {5, false}}, false, false, false, true},
                   {"by_group_down", {{2, true}}, false, false, true, true}};
  builder.PutRows(data, definition, {});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("things", definition);
  return builder.Finish();
}

// The expected content of the table: by id, the text of every other column.
class Model {
 public:
  explicit Model(std::filesystem::path path) : path_(std::move(path)) {}

  // One transaction of several operations; some are rolled back.
  void Batch() {
    const auto saved = rows_;
    const auto saved_codes = codes_;
    const auto transaction = WriteTransaction::Begin(path_);
    WritableTable& table = transaction->Table("things");
    for (int i = 0; i < 60; ++i) Step(table);
    if (random_() % 8 == 0) {
      rows_ = saved;
      codes_ = saved_codes;
      return;
    }
    transaction->Commit();
  }

  void Compare() const {
    const auto database = DatabaseFile::Open(path_);
    const access::Table* table = database->FindTable("things");
    std::map<std::int64_t, std::string> found;
    for (const auto cursor = table->Rows(); cursor->Next();) {
      std::string& row = found[cursor->Integer(0)];
      for (std::size_t i = 1; i < 8; ++i) row += TextOf(cursor->Field(i)) + "|";
    }
    EXPECT_EQ(found, rows_);
    EXPECT_EQ(static_cast<std::size_t>(table->row_count()), rows_.size());
  }

  // "id,code" of every row, sorted.
  std::vector<std::string> Codes() const {
    std::vector<std::string> codes;
    for (const auto& [id, line] : rows_) {
      codes.push_back(std::to_string(id) + "," + line.substr(0, line.find('|')));
    }
    std::ranges::sort(codes);
    return codes;
  }

  std::size_t size() const { return rows_.size(); }
  int refused() const { return refused_; }

 private:
  std::vector<ColumnValue> RandomValues() {
    const auto word = [&](std::size_t longest) {
      constexpr std::string_view kLetters = "aAbBcCxyzZ019 _";
      std::string text;
      for (std::size_t n = random_() % (longest + 1); n > 0; --n) {
        text += kLetters[random_() % kLetters.size()];
      }
      return text;
    };
    const bool null = random_() % 10 == 0;
    const auto amount = static_cast<std::int64_t>(random_() % 2001) - 1000;
    const std::string code = std::to_string(random_() % 600) + word(2);
    return {{"code", code},
            {"group", null ? Value(Null()) : Value(word(30))},
            {"amount", Currency::FromTenThousandths(amount * 12345)},
            {"at", Date::FromSerial(static_cast<double>(random_() % 90000) - 40000)},
            {"flag", random_() % 2 == 0},
            {"notes", random_() % 3 == 0 ? Value(word(200)) : Value(Null())},
            {"must", static_cast<std::int64_t>(random_() % 1000)}};
  }

  static std::string Line(const std::vector<ColumnValue>& values) {
    std::string line;
    for (const ColumnValue& value : values) line += TextOf(value.value) + "|";
    return line;
  }

  void Step(WritableTable& table) {
    const auto dice = random_() % 10;
    if (rows_.empty() || dice < 5) return Insert(table);
    auto row = rows_.lower_bound(static_cast<std::int64_t>(random_() % (next_id_ + 1)));
    if (row == rows_.end()) row = rows_.begin();
    const auto places = table.Find({{"id", row->first}});
    ASSERT_EQ(places.size(), 1U) << row->first;
    if (dice < 7) {
      table.Delete(places[0]);
      codes_.erase(codes_.find(Folded(row->second)));
      rows_.erase(row);
      return;
    }
    const auto values = RandomValues();
    const std::string line = Line(values);
    const std::string old_code = Folded(row->second), code = Folded(line);
    const bool taken = code != old_code && codes_.contains(code);
    EXPECT_EQ(NumberOf([&] { table.Update(places[0], values); }), taken ? 3022 : 0) << line;
    refused_ += taken ? 1 : 0;
    if (taken) return;
    codes_.erase(old_code);
    codes_.insert(code);
    row->second = line;
  }

  void Insert(WritableTable& table) {
    const auto values = RandomValues();
    const std::string line = Line(values);
    const bool taken = codes_.contains(Folded(line));
    RowId place;
    EXPECT_EQ(NumberOf([&] { place = table.Insert(values); }), taken ? 3022 : 0) << line;
    refused_ += taken ? 1 : 0;
    if (taken) return;
    codes_.insert(Folded(line));
    const std::int64_t id = std::get<std::int64_t>(table.Read(place)[0]);
    EXPECT_FALSE(rows_.contains(id));
    next_id_ = std::max(next_id_, static_cast<std::uint64_t>(id));
    rows_[id] = line;
  }

  // A code as the engine compares it: without trailing spaces and case.
  static std::string Folded(const std::string& line) {
    std::string code = line.substr(0, line.find('|'));
    code.erase(code.find_last_not_of(' ') + 1);
    std::ranges::transform(code, code.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return code;
  }

  std::filesystem::path path_;
  std::mt19937 random_{20261121};
  std::map<std::int64_t, std::string> rows_;
  std::set<std::string> codes_;
  std::uint64_t next_id_ = 0;
  int refused_ = 0;
};

// The same from another reader, which visits moved rows in another order.
std::vector<std::string> ExportedCodes(const std::filesystem::path& path) {
  std::istringstream lines(
      RunProcess({"mdb-export", "-H", "-q", "", path.string(), "things"}).output);
  std::vector<std::string> codes;
  for (std::string line; std::getline(lines, line);) {
    codes.push_back(line.substr(0, line.find(',', line.find(',') + 1)));
  }
  std::ranges::sort(codes);
  return codes;
}

TEST(ThousandsOfChanges, LeaveTheTableAsTheModelPredicts) {
  const ScratchDatabase file(IndexedDatabase());
  Model model(file.path());
  for (int batch = 0; batch < (kSlowBuild ? 20 : 60) && !testing::Test::HasFailure(); ++batch) {
    model.Batch();
    model.Compare();
    ExpectHealthy(file.path());
  }
  EXPECT_GT(model.size(), 100U);
  EXPECT_GT(model.refused(), 0);
  if (!HasMdbTools()) GTEST_SKIP() << "mdb-export is not installed";
  EXPECT_EQ(ExportedCodes(file.path()), model.Codes());
}

// Every index grows by many splits and shrinks until it is empty.
TEST(AnIndex, GrowsByLevelsAndShrinksToNothing) {
  const ScratchDatabase file(IndexedDatabase());
  constexpr std::int64_t kRows = kSlowBuild ? 600 : 2000;
  {
    const auto transaction = WriteTransaction::Begin(file.path());
    WritableTable& things = transaction->Table("things");
    for (std::int64_t i = 0; i < kRows; ++i) {
      const std::int64_t mixed = i * 3571 % kRows;
      things.Insert({{"code", "a long code that fills the pages " + std::to_string(mixed)},
                     {"group", "group of forty letters or so " + std::to_string(mixed % 700)},
                     {"must", Number(1)}});
    }
    transaction->Commit();
  }
  ExpectHealthy(file.path());
  for (const std::int64_t keep : {kRows / 2, kRows / 50, std::int64_t{0}}) {
    const auto transaction = WriteTransaction::Begin(file.path());
    WritableTable& things = transaction->Table("things");
    std::vector<RowId> rows = things.All();
    std::ranges::shuffle(rows, std::mt19937(7));
    for (std::size_t i = static_cast<std::size_t>(keep); i < rows.size(); ++i) {
      things.Delete(rows[i]);
    }
    transaction->Commit();
    ExpectHealthy(file.path());
    EXPECT_EQ(DatabaseFile::Open(file.path())->FindTable("things")->row_count(), keep);
  }
}

TEST(AutoNumbers, DoNotRestartAfterTheHighestValue) {
  const ScratchDatabase file(IndexedDatabase());
  const auto transaction = WriteTransaction::Begin(file.path());
  WritableTable& things = transaction->Table("things");
  const auto insert = [&](std::vector<ColumnValue> values) {
    values.push_back({"must", Number(1)});
    return NumberOf([&] { things.Insert(values); });
  };
  EXPECT_EQ(insert({{"id", Number(-7)}, {"code", Text("a")}}), 0);
  EXPECT_EQ(insert({{"code", Text("b")}}), 0);
  EXPECT_EQ(things.Find({{"id", Number(1)}}).size(), 1U);
  EXPECT_EQ(insert({{"id", Number(2147483647)}, {"code", Text("c")}}), 0);
  EXPECT_EQ(insert({{"code", Text("d")}}), 3073);
  EXPECT_EQ(insert({{"id", Number(2147483648)}, {"code", Text("d")}}), 3349);
  EXPECT_EQ(insert({{"id", Number(5)}, {"code", Text("d")}}), 0);
  transaction->Commit();
  ExpectHealthy(file.path());
}

}  // namespace
}  // namespace tenora::test
