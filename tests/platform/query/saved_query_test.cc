// Saved queries, named in statements like tables.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "platform/access/file_builder.h"
#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using test::BuiltPiece;
using test::BuiltQuery;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// The attributes of the rows of a definition.
enum { kKind = 1, kParameter, kOptions, kOtherFile, kFrom, kField, kOn, kWhere, kGroup, kHaving };
constexpr int kSortBy = 11;

BuiltPiece Table(const std::string& name, const std::string& alias = {}) {
  return {.attribute = kFrom, .name = name, .second_name = alias, .expression = {}};
}
BuiltPiece Clause(int attribute, const std::string& expression, const std::string& name = {}) {
  return {.attribute = attribute, .name = name, .second_name = {}, .expression = expression};
}
BuiltPiece Join(const std::string& left, const std::string& right, const std::string& on,
                int kind) {
  return {.attribute = kOn, .name = left, .second_name = right, .expression = on, .flag = kind};
}
BuiltPiece Flag(int attribute, int flag, const std::string& name = {}) {
  return {.attribute = attribute, .name = name, .second_name = {}, .expression = {}, .flag = flag};
}

std::vector<BuiltQuery> Queries() {
  return {
      {"Large",
       {Flag(kKind, 1), Flag(kOptions, 0), Table("rents"), Clause(kField, "rents.code"),
        Clause(kField, "[amount]*2", "Twice"), Clause(kWhere, "(((rents.amount)>15))"),
        Clause(kSortBy, "rents.amount", "D"), Clause(kSortBy, "rents.code")}},
      {"Codes of large",
       {Table("Large", "L"), Clause(kField, "L.code"), Clause(kWhere, "Twice<70")}},
      {"All fields", {Flag(kOptions, 9), Table("rents"), Clause(kWhere, "amount=20")}},
      {"Both",
       {Flag(kKind, 9),
        Flag(kOptions, 3),
        {.attribute = kFrom,
         .name = {},
         .second_name = "X7YZ_____1",
         .expression = "SELECT code FROM rents\r\n"},
        {.attribute = kFrom,
         .name = {},
         .second_name = "X7YZ_____2",
         .expression = "SELECT code FROM people;\r\n"},
        Clause(kSortBy, "code", "D")},
       128},
      {"Both, all",
       {Flag(kKind, 9),
        Flag(kOptions, 1),
        {.attribute = kFrom,
         .name = {},
         .second_name = "X7YZ_____1",
         .expression = "SELECT code FROM rents"},
        {.attribute = kFrom,
         .name = {},
         .second_name = "X7YZ_____2",
         .expression = "SELECT code FROM people"}},
       128},
      {"First",
       {Flag(kOptions, 16, "1"), Table("rents"), Clause(kField, "code"),
        Clause(kSortBy, "amount", "D")}},
      {"Half",
       {Flag(kOptions, 2 | 16 | 32, "50"), Table("rents"), Clause(kField, "code"),
        Clause(kSortBy, "code")}},
      {"Totals",
       {Table("rents"), Clause(kField, "code"), Clause(kField, "Sum(amount)", "Total"),
        Clause(kGroup, "code"), Clause(kHaving, "Sum(amount)>15")}},
      // A condition of two rows, an outer join inside an inner one, and a table joined to itself.
      {"Joined",
       {Table("people"), Table("rents"), Table("people", "again"), Clause(kField, "people.name"),
        Clause(kField, "rents.amount"), Clause(kField, "again.name", "other"),
        Join("people", "rents", "people.code = rents.code", 2),
        Join("people", "rents", "people.least <= rents.amount", 2),
        Join("again", "people", "again.code = people.code", 1), Clause(kSortBy, "people.name"),
        Clause(kSortBy, "rents.amount")}},
      {"Crossed",
       {Table("people"), Table("rents"), Clause(kField, "name"), Clause(kField, "amount"),
        Clause(kWhere, "amount=40")}},
      {"From a select",
       {{.attribute = kFrom,
         .name = {},
         .second_name = "part",
         .expression = "SELECT code FROM rents WHERE amount>30"},
        Clause(kField, "part.code")}},
      {"People with rent",
       {Flag(kOptions, 8), Table("people"), Table("rents"), Clause(kField, "people.name"),
        Clause(kWhere, "people.code=rents.code")}},
      {"~sq_fLetters", {Flag(kOptions, 1), Table("people")}, 3},
      {"Asks",
       {Flag(kParameter, 10, "User Name"), Table("rents"), Clause(kField, "code"),
        Clause(kWhere, "code=[User Name]")}},
      {"Asks a form",
       {Table("rents"), Clause(kField, "code"), Clause(kWhere, "code=[Forms]![Letters]![Code]")}},
      {"Make", {Flag(kKind, 2, "copy"), Table("rents"), Clause(kField, "code")}, 80},
      {"Append", {Flag(kKind, 3, "people"), Table("rents"), Clause(kField, "code")}, 64},
      {"Change", {Flag(kKind, 4), Table("rents"), Clause(kField, "1", "")}, 48},
      {"Remove", {Flag(kKind, 5), Table("rents"), Clause(kField, "code")}, 32},
      {"Pivot", {Flag(kKind, 6), Table("rents"), Clause(kField, "code")}, 16},
      {"Define",
       {{.attribute = kKind,
         .name = {},
         .second_name = {},
         .expression = "create table x (y long)",
         .flag = 7}},
       96},
      {"Pass on", {Flag(kKind, 8, "ODBC;DSN=x;PWD=secret")}, 112},
      {"Elsewhere", {Flag(kOtherFile, 0, "C:\\x.mdb"), Table("rents"), Clause(kField, "code")}},
      {"Round", {Table("About"), Clause(kField, "code")}},
      {"About", {Table("Round"), Clause(kField, "code")}},
      {"Lost", {Table("nosuch"), Clause(kField, "code")}},
      {"Wrong", {Table("rents"), Clause(kField, "code +")}},
      {"Stray join", {Table("rents"), Clause(kField, "code"), Join("rents", "people", "1=1", 1)}},
      {"Unknown kind", {Flag(kKind, 77), Table("rents")}},
  };
}

class SavedQueries : public ::testing::TestWithParam<int> {
 protected:
  SavedQueries() : path_(folder_ / "queries.mdb") {
    test::FileBuilder builder(GetParam());
    const auto row = [&](const char* code, unsigned number, const char* name) {
      std::vector<std::string> texts = {builder.Text(code)};
      if (name != nullptr) texts.push_back(builder.Text(name));
      std::vector<bool> present(name == nullptr ? 2 : 3, true);
      return builder.Row(present, test::Stored32(number), texts);
    };
    builder.AddTable("rents",
                     {.columns = {{"code", 10, 0, false, 0, 40}, {"amount", 4, 1, true, 0, 4}}},
                     {row("A", 10, nullptr), row("A", 20, nullptr), row("B", 30, nullptr),
                      row("C", 40, nullptr)});
    builder.AddTable("people",
                     {.columns = {{"code", 10, 0, false, 0, 40},
                                  {"least", 4, 1, true, 0, 4},
                                  {"name", 10, 2, false, 1, 40}}},
                     {row("A", 15, "Ada"), row("B", 50, "Bob"), row("D", 0, "Dan")});
    builder.AddQueries(Queries());
    std::ofstream(path_, std::ios::binary) << builder.Finish();
    database_ = Workspace::Create()->OpenDatabase(path_);
  }

  test::ScratchFolder folder_;
  std::filesystem::path path_;
  std::unique_ptr<EngineDatabase> database_;
};

TEST_P(SavedQueries, AreReadLikeTables) {
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"Large", {"C|80", "B|60", "A|40"}},
      {"select code from [large] where Twice = 60", {"B"}},
      {"select code from [large] where Twice = 80", {"C"}},
      {"select l.code, p.name from Large as l left join people as p on p.code = l.code where "
       "l.Twice < 70 order by l.code desc",
       {"B|Bob", "A|Ada"}},
      {"select count(*) from rents where code in (select code from Large)", {"4"}},
      {"select * from [Codes of large] where code <> 'A'", {"B"}},
      {"select * from [All fields]", {"A|20"}},
      {"Both", {"D", "C", "B", "A"}},
      {"select count(*) from [Both, all]", {"7"}},
      {"First", {"C"}},
      {"Half", {"A", "B"}},
      {"Totals", {"A|30", "B|30", "C|40"}},
      {"Joined", {"Ada|20|Ada", "Bob|null|Bob", "Dan|null|Dan"}},
      {"Crossed", {"Ada|40", "Bob|40", "Dan|40"}},
      {"[From a select]", {"C"}},
      {"[People with rent]", {"Ada", "Bob"}},
      {"select name from [~sq_fLetters] where code = 'D'", {"Dan"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(RowsOf(*database_, c.sql), c.rows) << c.sql;
  if (GetParam() == 0) return;
  database_->BeginTrans();
  for (const auto& c : kCases) EXPECT_EQ(RowsOf(*database_, c.sql), c.rows) << c.sql;
  database_->Rollback();
}

TEST_P(SavedQueries, AreRefusedByWhatTheyAre) {
  const struct {
    const char* query;
    int number;
    const char* named;
  } kCases[] = {
      {"Asks", 3061, "Query 'Asks' asks for User Name"},
      {"Asks a form", 3061, "Query 'Asks a form': Too few parameters. Expected 1. Unknown: Forms!"},
      {"Make", 3129, "makes a table"},
      {"Append", 3129, "inserts rows"},
      {"Change", 3129, "updates rows"},
      {"Remove", 3129, "deletes rows"},
      {"Pivot", 3129, "'Pivot' is a crosstab"},
      {"Define", 3129, "changes definitions"},
      {"Pass on", 3129, "pass-through"},
      {"Elsewhere", 3129, "another database"},
      {"Round", 3102, "Circular reference caused by 'Round'"},
      {"Lost", 3078, "Query 'Lost': "},
      {"Wrong", 3075, "Query 'Wrong': "},
      {"Stray join", 3049, "joins 'people', which is none of its tables"},
      {"Unknown kind", 3049, "kind 77"},
  };
  for (const auto& c : kCases) {
    const std::string sql = std::string("select * from [") + c.query + "]";
    const auto error = test::RaisedBy([&] { RowsOf(*database_, sql); });
    ASSERT_TRUE(error.has_value()) << sql;
    EXPECT_EQ(error->number(), c.number) << error->what();
    EXPECT_THAT(error->what(), HasSubstr(c.named));
    EXPECT_THAT(error->what(), ::testing::Not(HasSubstr("secret")));
  }
}

TEST_P(SavedQueries, AreListedAndNotWritten) {
  std::vector<std::string> kinds;
  for (const TableSummary& table : database_->Tables()) {
    if (!table.kind.empty() && table.kind != "query")
      kinds.push_back(table.name + ": " + table.kind);
  }
  EXPECT_THAT(kinds,
              ElementsAre("Both: union query", "Both, all: union query", "Make: make-table query",
                          "Append: append query", "Change: update query", "Remove: delete query",
                          "Pivot: crosstab query", "Define: data-definition query",
                          "Pass on: pass-through query"));
  if (GetParam() == 0) return;
  const std::string before = ReadWholeFile(path_);
  for (const char* sql : {"update Large set code = 'x'", "delete from Large where code = 'A'",
                          "insert into Large (code) values ('x')"}) {
    const auto error = test::RaisedBy([&] { database_->Execute(sql); });
    ASSERT_TRUE(error.has_value()) << sql;
    EXPECT_EQ(error->number(), 3073) << sql;
    EXPECT_THAT(error->what(), HasSubstr("'Large' is a saved query"));
  }
  EXPECT_EQ(ReadWholeFile(path_), before);
}

// Each query names the one before twice.
TEST(HostileQueries, ThatDoubleAtEachStepEnd) {
  test::FileBuilder builder(1);
  std::vector<BuiltQuery> queries = {{"q0", {Clause(kField, "1", "x")}}};
  for (int i = 1; i < 30; ++i) {
    const std::string before = "q" + std::to_string(i - 1);
    queries.push_back({"q" + std::to_string(i),
                       {Table(before, "a"), Table(before, "b"), Clause(kField, "a.x", "x")}});
  }
  queries[0].pieces.push_back(Table("MSysObjects"));
  builder.AddQueries(queries);
  const test::ScratchFolder folder;
  std::ofstream(folder / "q.mdb", std::ios::binary) << builder.Finish();
  const auto database = Workspace::Create()->OpenDatabase(folder / "q.mdb");
  EXPECT_EQ(test::NumberOf([&] { RowsOf(*database, "select x from q29"); }), 3360);
}

TEST_P(SavedQueries, OfDamagedFilesGiveRowsOrAnError) {
  const std::string sound = ReadWholeFile(path_);
  std::mt19937 random(7);
  int refused = 0;
  for (int round = 0; round < 40; ++round) {
    std::string damaged = sound;
    for (int i = 0; i < 60; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    std::ofstream(path_, std::ios::binary) << damaged;
    for (const BuiltQuery& query : Queries()) {
      const std::string sql = "select top 20 * from [" + query.name + "]";
      if (test::RaisedBy([&] { RowsOf(*Workspace::Create()->OpenDatabase(path_), sql); }))
        ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

INSTANTIATE_TEST_SUITE_P(OfVersions, SavedQueries, ::testing::Values(0, 1, 3));

}  // namespace
}  // namespace tenora::query
