// Rows inserted, updated and deleted, read back by ourselves and by another reader, and checked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "platform/access/check.h"
#include "platform/access/database_writer.h"
#include "platform/access/file_builder.h"
#include "platform/access/other_readers.h"
#include "platform/runtime/error.h"
#include "support/slow_build.h"
#include "support/test_files.h"

namespace tenora::test {
namespace {

using access::ColumnValue;
using access::DatabaseFile;
using access::RowId;
using access::WritableTable;
using access::WriteTransaction;

std::string Text(const char* text) { return text; }
Value Number(std::int64_t number) { return number; }

void ExpectHealthy(const std::filesystem::path& path) {
  for (const access::Finding& finding : access::CheckDatabase(path)) {
    ADD_FAILURE() << finding.Text();
  }
}

// The number of the error that `step` raises; 0 for none.
template <typename Step>
int ErrorOf(Step step) {
  try {
    step();
  } catch (const RuntimeError& error) {
    return error.number();
  }
  return 0;
}

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

TEST_F(WritingToTheSample, StoresWhatAReceiptNeeds) {
  {
    const auto transaction = WriteTransaction::Begin(path_);
    transaction->Table("glcodes").Insert({{"gl_code", Text("NxtReceipt")},
                                          {"type", Number(202)},
                                          {"taxable_yn", Number(1)},
                                          {"balancedate", Date::FromCalendar(2026, 11, 21)},
                                          {"description", Text("Next Receipt Number")},
                                          {"bankbalance", Number(0)},
                                          {"money1", 12.345}});
    transaction->Table("CUSTOM_FIELDS")
        .Insert({{"parentcode", Text("B1")},
                 {"parenttype", Number(202)},
                 {"fieldcode", Text("NxtReceipt")},
                 {"value", Text("1000")}});
    transaction->Commit();
  }
  const auto transaction = WriteTransaction::Begin(path_);
  WritableTable& fields = transaction->Table("custom_fields");
  const auto rows = fields.Find(
      {{"fieldcode", Text("nxtRECEIPT")}, {"parenttype", Number(202)}, {"parentcode", Text("b1")}});
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(fields.Read(rows[0])[3], Value(Text("1000")));
  fields.Update(rows[0], {{"value", Text("1001")}});
  EXPECT_EQ(fields.Read(rows[0])[3], Value(Text("1001")));
  transaction->Commit();
  EXPECT_THAT(Rows("custom_fields"), testing::Contains("B1|202|NxtReceipt|1001|"));
  EXPECT_THAT(Rows("glcodes"),
              testing::Contains("NxtReceipt|Next Receipt Number|202|False|False|True|2026-11-21|0|"
                                "12.345|"));
  ExpectHealthy(path_);
}

TEST_F(WritingToTheSample, ChangesNothingWithoutCommit) {
  const auto before = Rows("owner");
  {
    const auto transaction = WriteTransaction::Begin(path_);
    WritableTable& owner = transaction->Table("owner");
    owner.Update(owner.All().front(), {{"name", Text("Changed")}});
    owner.Delete(owner.All().back());
  }
  EXPECT_EQ(Rows("owner"), before);
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "property.mdb.journal"));
}

TEST_F(WritingToTheSample, RefusesWhatTheEngineRefusesAndGoesOn) {
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
      {3127, {{"Code", Text("X")}, {"no such column", Number(1)}}},
      {3421, {{"Code", Text("\xFF")}}},
      {3073, {{"Code", Text("\xE6\x97\xA5")}}},  // no key is known for it
  };
  for (const auto& [number, values] : cases) {
    EXPECT_EQ(ErrorOf([&] { owner.Insert(values); }), number);
  }
  EXPECT_EQ(ErrorOf([&] { owner.Update(last, {{"Code", taken}}); }), 3022);
  EXPECT_EQ(ErrorOf([&] { owner.Update({last.page, 200}, {}); }), 3167);
  EXPECT_EQ(ErrorOf([&] { transaction->Table("MSysObjects"); }), 3073);
  EXPECT_EQ(ErrorOf([&] { transaction->Table("nothing"); }), 3078);
  owner.Insert({{"Code", Text("AFTER")}});
  transaction->Commit();
  EXPECT_EQ(Rows("owner").size(), 13U);
  ExpectHealthy(path_);
}

TEST_F(WritingToTheSample, KeepsLongValuesOfEverySizeAndFreesThem) {
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

TEST_P(ReadByOthers, IsWhatEachKindOfWriteLeaves) {
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
      {"rows rewritten where they are", "tenancy",
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
      {"dates before and behind 1900", "rentchanges",
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

// A table with every kind of index, made anew.
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

// What the table should hold, by id: a text of each column but the id.
class Model {
 public:
  explicit Model(std::filesystem::path path) : path_(std::move(path)) {}

  // One transaction of some operations; it may be dropped.
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
    EXPECT_EQ(ErrorOf([&] { table.Update(places[0], values); }), taken ? 3022 : 0) << line;
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
    EXPECT_EQ(ErrorOf([&] { place = table.Insert(values); }), taken ? 3022 : 0) << line;
    refused_ += taken ? 1 : 0;
    if (taken) return;
    codes_.insert(Folded(line));
    const std::int64_t id = std::get<std::int64_t>(table.Read(place)[0]);
    EXPECT_FALSE(rows_.contains(id));
    next_id_ = std::max(next_id_, static_cast<std::uint64_t>(id));
    rows_[id] = line;
  }

  // A code as the engine tells codes apart: blanks at the end and letter case do not count.
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

// The same by another reader, which meets rows that have moved in another order.
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

TEST(AThousandChanges, LeaveTheTableAsAPlainModelSays) {
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "things.mdb";
  std::ofstream(path, std::ios::binary) << IndexedDatabase();
  Model model(path);
  for (int batch = 0; batch < (kSlowBuild ? 20 : 60) && !testing::Test::HasFailure(); ++batch) {
    model.Batch();
    model.Compare();
    ExpectHealthy(path);
  }
  EXPECT_GT(model.size(), 100U);
  EXPECT_GT(model.refused(), 0);
  if (!HasMdbTools()) GTEST_SKIP() << "mdb-export is not installed";
  EXPECT_EQ(ExportedCodes(path), model.Codes());
}

// What a table's designer asked of its columns: by the definition, the catalogue and relationships.
class WritingByRules : public testing::Test {
 protected:
  WritingByRules() {
    FileBuilder builder(1);
    const auto number = [](const char* name, unsigned place, unsigned flags = 2) {
      return BuiltColumn{name, 4, place, true, 4 * place, 4, flags};
    };
    const BuiltColumn text{"text", 10, 4, false, 0, 40, 2, 9, 4};
    const auto rules = [&](const std::vector<BuiltProperty>& properties) {
      return builder.Properties(properties);
    };
    builder.AddTable("things",
                     {.columns = {number("a", 0), number("must", 1, 0), number("should", 2),
                                  number("ruled", 3), text}},
                     {},
                     rules({{"SHOULD", "Required", 1, "\xFF"},
                            {"a", "Required", 1, std::string(1, '\0')},
                            {"text", "AllowZeroLength", 1, std::string(1, '\0')}}));
    builder.AddTable("ruled", {.columns = {number("a", 0), number("b", 1)}}, {},
                     rules({{"b", "ValidationRule", 12, Utf16(u">0")}}));
    builder.AddTable("all_ruled", {.columns = {number("a", 0)}}, {},
                     rules({{"", "ValidationRule", 12, Utf16(u"a<9")}}));
    builder.AddTable("torn", {.columns = {number("a", 0)}}, {}, "MR2");
    const BuiltIndex key{"PrimaryKey", {{0, false}}, true, true, false, true};
    builder.AddTable("parent",
                     {.columns = {number("id", 0), number("other", 1)}, .indexes = {key}});
    for (const char* child : {"strict", "cascading", "loose"}) {
      builder.AddTable(child, {.columns = {number("id", 0), number("up", 1)}});
    }
    builder.AddTable("tree", {.columns = {number("id", 0), number("up", 1)}, .indexes = {key}});
    builder.AddRelationships({{"r1", "strict", "up", "parent", "id", 0},
                              {"r2", "cascading", "up", "Parent", "ID", 0x1100},
                              {"r3", "loose", "up", "parent", "id", 2},
                              {"r4", "tree", "up", "tree", "id", 0}});
    std::ofstream(path_, std::ios::binary) << builder.Finish();
    transaction_ = WriteTransaction::Begin(path_);
  }

  RowId Insert(const char* table, const std::vector<ColumnValue>& values) {
    return transaction_->Table(table).Insert(values);
  }
  // The number and text of the error that the step raises.
  template <typename Step>
  std::string Refusal(Step step) {
    try {
      step();
    } catch (const RuntimeError& error) {
      return std::to_string(error.number()) + " " + error.what();
    }
    return "done";
  }

  ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_ / "rules.mdb";
  std::unique_ptr<WriteTransaction> transaction_;
};

TEST_F(WritingByRules, RefusesWhatTheColumnsDoNotAllow) {
  const RowId row = Insert("things", {{"must", Number(1)}, {"should", Number(2)}});
  const RowId ruled = Insert("loose", {{"id", Number(1)}});
  const struct {
    const char* table;
    std::vector<ColumnValue> values;
    const char* refusal;
  } cases[] = {
      {"things", {{"must", Null()}}, "3314 You must enter a value in the 'things.must' field."},
      {"things", {{"should", Null()}}, "3314 You must enter a value in the 'things.should' field."},
      {"things", {{"text", Text("")}}, "3315 Field 'things.text' cannot be a zero-length string."},
      {"things", {{"text", Text(" ")}, {"a", Null()}}, "done"},
      {"loose", {{"up", Number(77)}}, "done"},
  };
  for (const auto& c : cases) {
    const RowId place = c.table == std::string("things") ? row : ruled;
    EXPECT_EQ(Refusal([&] { transaction_->Table(c.table).Update(place, c.values); }), c.refusal);
  }
  EXPECT_EQ(Refusal([&] { Insert("things", {{"must", Number(1)}}); }).substr(0, 4), "3314");
  EXPECT_EQ(Refusal([&] {
              Insert("ruled", {{"a", Number(1)}});
            }),
            "3073 Operation must use an updateable query. Table 'ruled': column 'b' has the "
            "validation rule >0, which is not worked out here.");
  EXPECT_THAT(Refusal([&] {
                Insert("all_ruled", {{"a", Number(1)}});
              }),
              testing::HasSubstr("3073 Operation must use an updateable query. Table 'all_ruled': "
                                 "its rows have the validation rule a<9"));
  EXPECT_THAT(Refusal([&] { Insert("torn", {}); }),
              testing::AllOf(testing::StartsWith("3049"), testing::HasSubstr("table 'torn'")));
}

TEST_F(WritingByRules, NoRowRefersToOneThatIsMissing) {
  const RowId one = Insert("parent", {{"id", Number(1)}});
  const RowId two = Insert("parent", {{"id", Number(2)}});
  const RowId three = Insert("parent", {{"id", Number(3)}});
  const RowId child = Insert("strict", {{"id", Number(1)}, {"up", Number(1)}});
  const RowId root = Insert("tree", {{"id", Number(1)}, {"up", Number(1)}});
  const RowId leaf = Insert("tree", {{"id", Number(2)}, {"up", Number(1)}});
  Insert("strict", {{"id", Number(2)}});
  Insert("cascading", {{"up", Number(2)}});
  Insert("loose", {{"up", Number(99)}});
  const auto table = [&](const char* name) -> WritableTable& { return transaction_->Table(name); };
  const struct {
    std::function<void()> step;
    const char* refusal;
  } cases[] = {
      {[&] {
         Insert("strict", {{"up", Number(9)}});
       },
       "3201 You cannot add or change a record because a related record is required in table "
       "'parent'."},
      {[&] {
         table("strict").Update(child, {{"up", Number(9)}});
       },
       "3201"},
      {[&] {
         table("strict").Update(child, {{"id", Number(7)}});
       },
       "done"},
      {[&] { table("parent").Delete(one); },
       "3200 The record cannot be deleted or changed because table 'strict' includes related "
       "records."},
      {[&] {
         table("parent").Update(one, {{"id", Number(8)}});
       },
       "3200"},
      {[&] {
         table("parent").Update(one, {{"other", Number(8)}});
       },
       "done"},
      {[&] { table("parent").Delete(two); },
       "3073 Operation must use an updateable query. Table 'parent': the relationship 'r2' carries "
       "the change on to table 'cascading'"},
      {[&] {
         table("parent").Update(two, {{"id", Number(8)}});
       },
       "3073"},
      {[&] {
         table("parent").Update(three, {{"id", Number(99)}});
       },
       "done"},
      {[&] { table("parent").Delete(three); }, "done"},
      {[&] { table("tree").Delete(root); }, "3200"},
      {[&] { table("tree").Delete(leaf); }, "done"},
      {[&] { table("tree").Delete(root); }, "done"},
      {[&] { table("strict").Delete(child); }, "done"},
      {[&] { table("parent").Delete(one); }, "done"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(Refusal(c.step), testing::StartsWith(c.refusal)) << &c - cases;
  }
  transaction_->Commit();
  for (const access::Finding& finding : access::CheckDatabase(path_)) {
    EXPECT_THAT(finding.Text(), testing::HasSubstr("table 'torn'"));
  }
}

// Every index grows and splits again and again, and is taken down to nothing.
TEST(AnIndex, GrowsByLevelsAndShrinksToNothing) {
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "things.mdb";
  std::ofstream(path, std::ios::binary) << IndexedDatabase();
  constexpr std::int64_t kRows = kSlowBuild ? 600 : 2000;
  {
    const auto transaction = WriteTransaction::Begin(path);
    WritableTable& things = transaction->Table("things");
    for (std::int64_t i = 0; i < kRows; ++i) {
      const std::int64_t mixed = i * 3571 % kRows;
      things.Insert({{"code", "a long code that fills the pages " + std::to_string(mixed)},
                     {"group", "group of forty letters or so " + std::to_string(mixed % 700)},
                     {"must", Number(1)}});
    }
    transaction->Commit();
  }
  ExpectHealthy(path);
  for (const std::int64_t keep : {kRows / 2, kRows / 50, std::int64_t{0}}) {
    const auto transaction = WriteTransaction::Begin(path);
    WritableTable& things = transaction->Table("things");
    std::vector<RowId> rows = things.All();
    std::ranges::shuffle(rows, std::mt19937(7));
    for (std::size_t i = static_cast<std::size_t>(keep); i < rows.size(); ++i) {
      things.Delete(rows[i]);
    }
    transaction->Commit();
    ExpectHealthy(path);
    EXPECT_EQ(DatabaseFile::Open(path)->FindTable("things")->row_count(), keep);
  }
}

// As many columns as a table can have, and rows up to the longest there is.
TEST(TheWidestTable, KeepsRowsUpToTheLongestOnePage) {
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "wide.mdb";
  FileBuilder builder(1);
  BuiltTable table;
  for (unsigned i = 0; i < 255; ++i) {
    table.columns.push_back({"c" + std::to_string(i), i % 2 == 0 ? 10 : 1, i, i % 2 != 0, i / 2,
                             i % 2 == 0 ? 510U : 1U, 2, 9, 4});
    if (i % 2 != 0) table.columns.back().place = 0;
  }
  builder.AddTable("wide", table);
  std::ofstream(path, std::ios::binary) << builder.Finish();
  std::map<std::size_t, int> outcomes;
  {
    const auto transaction = WriteTransaction::Begin(path);
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
      outcomes[letters] = ErrorOf([&] { wide.Update(row, values); });
    }
    transaction->Commit();
  }
  const auto refused = std::ranges::find_if(outcomes, [](const auto& o) { return o.second != 0; });
  ASSERT_NE(refused, outcomes.begin());
  ASSERT_NE(refused, outcomes.end());
  EXPECT_TRUE(std::all_of(refused, outcomes.end(), [](const auto& o) { return o.second == 3047; }));
  ExpectHealthy(path);
  const auto database = DatabaseFile::Open(path);
  if (HasMdbTools()) ExpectSameAsMdbExport(*database, *database->FindTable("wide"));
  if (WhyNoMdbReader().empty()) ExpectSameAsMdbReader(*database, *database->FindTable("wide"));
}

TEST(AutomaticNumbers, AreNotBegunAgainWhenTheyAreUsedUp) {
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "things.mdb";
  std::ofstream(path, std::ios::binary) << IndexedDatabase();
  const auto transaction = WriteTransaction::Begin(path);
  WritableTable& things = transaction->Table("things");
  const auto insert = [&](std::vector<ColumnValue> values) {
    values.push_back({"must", Number(1)});
    return ErrorOf([&] { things.Insert(values); });
  };
  EXPECT_EQ(insert({{"id", Number(-7)}, {"code", Text("a")}}), 0);
  EXPECT_EQ(insert({{"code", Text("b")}}), 0);
  EXPECT_EQ(things.Find({{"id", Number(1)}}).size(), 1U);
  EXPECT_EQ(insert({{"id", Number(2147483647)}, {"code", Text("c")}}), 0);
  EXPECT_EQ(insert({{"code", Text("d")}}), 3073);
  EXPECT_EQ(insert({{"id", Number(2147483648)}, {"code", Text("d")}}), 3349);
  EXPECT_EQ(insert({{"id", Number(5)}, {"code", Text("d")}}), 0);
  transaction->Commit();
  ExpectHealthy(path);
}

TEST(AFileOf1997, IsRefusedForWriting) {
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "old.mdb";
  std::ofstream(path, std::ios::binary) << FileBuilder(0).Finish();
  EXPECT_EQ(ErrorOf([&] { WriteTransaction::Begin(path); }), 3027);
}

}  // namespace
}  // namespace tenora::test
