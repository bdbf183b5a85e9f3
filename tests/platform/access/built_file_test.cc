// Features that the sample database does not have, in files built in each version of the format.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access/database_file.h"
#include "platform/access/file_builder.h"
#include "platform/access/other_readers.h"
#include "platform/access/showcase.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

using test::BuiltTable;
using test::FileBuilder;
using testing::ElementsAre;

std::shared_ptr<DatabaseFile> OpenText(const std::string& file) {
  const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
  return DatabaseFile::OpenBytes({bytes, bytes + file.size()}, "built.mdb");
}

std::vector<std::string> Texts(const Table& table, std::size_t column) {
  std::vector<std::string> texts;
  for (const auto rows = table.Rows(); rows->Next();) {
    texts.push_back(rows->IsNull(column) ? "null" : TextOf(rows->Field(column)));
  }
  return texts;
}

std::vector<std::string> Texts(const DatabaseFile& database, const char* table,
                               const std::string& column) {
  const Table& found = *database.FindTable(table);
  for (std::size_t i = 0; i < found.columns().size(); ++i) {
    if (found.columns()[i].name == column) return Texts(found, i);
  }
  throw std::out_of_range(column);
}

class EveryVersion : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Access, EveryVersion, testing::Range(0, 7));

TEST_P(EveryVersion, ReadsEachColumnType) {
  const auto database = OpenText(test::Showcase(GetParam()));
  EXPECT_EQ(database->format(), GetParam() == 0   ? Format::kJet3
                                : GetParam() == 1 ? Format::kJet4
                                                  : Format::kAce);
  struct Case {
    const char* column;
    std::vector<std::string> values;
    int since = 0;
  };
  const std::vector<Case> cases{
      {"flag", {"True", "False", "False"}},
      {"tiny", {"200", "200", "null"}},
      {"short", {"12345", "-12345", "null"}},
      {"number", {"2000000000", "-2000000000", "null"}},
      {"money", {"12345678901.2345", "-12345678901.2345", "null"}},
      {"single", {"0.375", "-0.375", "null"}},
      {"double", {"1.0625E+100", "-1.0625E+100", "null"}},
      {"when", {"2026-11-21 18:00:00", "1234-01-01 06:00:00", "null"}},
      {"text", {"plain", "1234", "null"}},
      {"letters", GetParam() == 0 ? std::vector<std::string>{"abcdef", "abcdef", "null"}
                                  : std::vector<std::string>{"abc", "abc", "null"}},
      {"guid",
       {"{04030201-0605-0807-090A-0B0C0D0E0F10}", "{04030201-0605-0807-090A-0B0C0D0E0F10}",
        "null"}},
      {"large", {"9007199254740993", "-9007199254740993", "null"}, 5},
      {"list", {"7", "7", "null"}, 5},
      {"moment", {"2026-11-21 18:00:00", "0100-01-01", "null"}, 5},
  };
  for (const Case& c : cases) {
    if (GetParam() < c.since) continue;
    EXPECT_EQ(Texts(*database, "all_types", c.column), c.values) << c.column;
  }
}

TEST_P(EveryVersion, ReadsBytesAndExactDecimals) {
  const auto database = OpenText(test::Showcase(GetParam()));
  const Table& table = *database->FindTable("all_types");
  const auto rows = table.Rows();
  ASSERT_TRUE(rows->Next());
  EXPECT_THAT(rows->Bytes(8), ElementsAre(std::byte{1}, std::byte{0x80}, std::byte{0xFF}));
  if (GetParam() == 0) return;
  EXPECT_EQ(rows->Text(12), "1844674407370956.3961");
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Text(12), "-1844674407370956.3961");
}

TEST_P(EveryVersion, ReadsLongValuesOfEachKind) {
  const auto database = OpenText(test::Showcase(GetParam()));
  EXPECT_THAT(Texts(*database, "long_values", "memo"),
              ElementsAre("within the row", "on a page of its own", test::ChainedText(), "null"));
  const auto rows = database->FindTable("long_values")->Rows();
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Bytes(2).size(), test::ChainedText().size() * (GetParam() == 0 ? 1 : 2));
}

TEST_P(EveryVersion, FollowsMovedRowsAndSkipsDeletedOnes) {
  const auto database = OpenText(test::Showcase(GetParam()));
  EXPECT_THAT(Texts(*database, "changed", "id"), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Texts(*database, "changed", "kept"), ElementsAre("one", "two", "null", "moved"));
  EXPECT_THAT(Texts(*database, "changed", "last"), ElementsAre("end", "null", "three", "null"));
  EXPECT_THAT(Texts(*database, "changed", "young"), ElementsAre("null", "22", "33", "44"));
}

TEST_P(EveryVersion, KnowsColumnsAndIndexes) {
  const auto database = OpenText(test::Showcase(GetParam()));
  EXPECT_THAT(database->TableNames(), ElementsAre("all_types", "long_values", "changed"));
  const Table& table = *database->FindTable("all_types");
  EXPECT_EQ(table.row_count(), 3);
  EXPECT_TRUE(table.columns()[3].auto_number);
  EXPECT_FALSE(table.columns()[2].auto_number);
  ASSERT_EQ(table.indexes().size(), 2U);
  EXPECT_TRUE(table.indexes()[0].primary && table.indexes()[0].unique);
  const Index& second = table.indexes()[1];
  EXPECT_EQ(second.name, "by_text");
  EXPECT_FALSE(second.primary || second.unique);
  ASSERT_EQ(second.columns.size(), 2U);
  EXPECT_EQ(second.columns[0].column, 9U);
  EXPECT_FALSE(second.columns[0].descending);
  EXPECT_TRUE(second.columns[1].descending);
}

// Verifies the builder: files that only this reader understands would prove nothing.
TEST_P(EveryVersion, BuiltFilesReadTheSameWithAnIndependentReader) {
  if (!test::HasMdbTools()) GTEST_SKIP() << "mdb-export is not installed";
  const test::ScratchFolder scratch;
  WriteWholeFile(scratch / "built.mdb", test::Showcase(GetParam()));
  const auto database = DatabaseFile::Open(scratch / "built.mdb");
  for (const std::string& name : database->TableNames()) {
    test::ExpectSameAsMdbExport(*database, *database->FindTable(name));
  }
}

TEST_P(EveryVersion, ReadsADefinitionThatSpansSeveralPages) {
  FileBuilder builder(GetParam());
  const auto definition = builder.NewPage(), data = builder.NewPage();
  BuiltTable table;
  std::string fixed;
  for (unsigned i = 0; i < 200; ++i) {
    const std::string name =
        std::string("a column with a long name, number ").append(std::to_string(i));
    table.columns.push_back({name, 3, i, true, 2 * i, 2});
    fixed += test::Stored16(i);
  }
  table.max_columns = 200;
  table.data_pages = {data};
  table.indexes = {{"last", {{199, false}}, true, false}};
  builder.PutRows(data, definition, {{builder.FixedRow(std::vector<bool>(200, true), fixed)}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("wide", definition);
  const auto database = OpenText(builder.Finish());
  EXPECT_EQ(database->FindTable("wide")->indexes().at(0).columns.at(0).column, 199U);
  const auto rows = database->FindTable("wide")->Rows();
  ASSERT_TRUE(rows->Next());
  for (std::size_t i = 0; i < 200; ++i) EXPECT_EQ(rows->Integer(i), static_cast<int>(i));
}

// A bitmap page of Jet 3 covers 16352 pages; the second one has the bits of the pages after those.
TEST(UsageMaps, ContinueOnTheNextBitmapPage) {
  FileBuilder builder(0);
  const auto definition = builder.NewPage(), near = builder.NewPage();
  std::uint32_t far = near;
  while (far < 16352 + 9) far = builder.NewPage();
  BuiltTable table;
  table.columns = {{"id", 4, 0, true, 0, 4}};
  table.max_columns = 1;
  table.data_pages = {near, far};
  table.indirect_map = true;
  builder.PutRows(near, definition, {{builder.FixedRow({true}, test::Stored32(1))}});
  builder.PutRows(far, definition, {{builder.FixedRow({true}, test::Stored32(2))}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("spread", definition);
  EXPECT_THAT(Texts(*OpenText(builder.Finish()), "spread", "id"), ElementsAre("1", "2"));
}

TEST(SystemCatalogue, ListsOnlyTheUsersTables) {
  FileBuilder builder(1);
  const auto definition = builder.NewPage();
  BuiltTable table;
  table.columns = {{"id", 4, 0, true, 0, 4}};
  table.max_columns = 1;
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("shown", definition);
  builder.AddToCatalogue("hidden", definition, 1, 8);
  builder.AddToCatalogue("MSysStuff", definition, 1, 0);
  builder.AddToCatalogue("flagged", definition, 1, 2);
  builder.AddToCatalogue("~TMPCLP1", definition, 1, 0);
  builder.AddToCatalogue("a query", 77, 5, 0);
  builder.AddToCatalogue("linked", 0, 6, 0x200000);
  const auto database = OpenText(builder.Finish());
  EXPECT_EQ(database->TableNames().size(), 2U);
  EXPECT_NE(database->FindTable("flagged"), nullptr);
  EXPECT_EQ(database->FindTable("a query"), nullptr);
  EXPECT_EQ(database->FindTable("linked"), nullptr);
  ASSERT_EQ(database->Queries().size(), 1U);
  EXPECT_EQ(database->Queries()[0].name, "a query");
  ASSERT_EQ(database->LinkedTables().size(), 1U);
  EXPECT_EQ(database->LinkedTables()[0].name, "linked");
}

// A calculated value as the row has it.
std::string Calculated(const std::string& value) {
  return std::string(16, '\0') + test::Stored32(static_cast<std::uint32_t>(value.size())) + value +
         std::string(3, '\0');
}

TEST(CalculatedColumns, AreReadByTheTypeOfTheirResult) {
  constexpr unsigned kCalculated = 0xC0;
  FileBuilder builder(3);
  // -12345.678: two bytes, scale, sign, then the high, low and middle words of the number.
  const std::string decimal = std::string("\x0E\0\3\x80", 4) + test::Stored32(0) +
                              test::Stored32(12345678) + test::Stored32(0);
  const std::string memo = Calculated(builder.Text("as long as it likes"));
  struct Case {
    const char* name;
    int declared, result;
    std::string stored;
    const char* read;
  };
  const std::vector<Case> cases{
      {"text", 10, 10, Calculated(builder.Text("Wayne, Bruce")), "Wayne, Bruce"},
      {"empty", 10, 10, Calculated({}), ""},
      {"long", 4, 4, Calculated(test::Stored32(12)), "12"},
      {"money", 7, 5, Calculated(test::Stored(std::int64_t{833333333})), "83333.3333"},
      {"single", 16, 6, Calculated(test::Stored(2.5F)), "2.5"},
      {"double", 7, 7, Calculated(test::Stored(-0.125)), "-0.125"},
      {"decimal", 7, 16, Calculated(decimal), "-12345.678"},
      {"yes", 3, 1, Calculated("\xFF"), "True"},
      {"no", 3, 1, Calculated(std::string(1, '\0')), "False"},
      {"memo", 10, 12, test::LongValueHead(0x80000000, memo.size(), test::Pointer(0, 0)) + memo,
       "as long as it likes"},
      {"unnamed type", 4, 0, Calculated(test::Stored32(7)), "7"},
      {"no date", 8, 8, Calculated({}), ""},
  };
  BuiltTable table;
  std::vector<test::BuiltProperty> properties;
  std::vector<std::string> values, cut;
  for (unsigned i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    table.columns.push_back({.name = c.name,
                             .type = c.declared,
                             .number = i,
                             .fixed = false,
                             .place = i,
                             .more_flags = kCalculated});
    if (c.result != 0) {
      properties.push_back({c.name, "ResultType", 2, std::string(1, static_cast<char>(c.result))});
    }
    values.push_back(c.stored);
    cut.push_back(c.stored.substr(0, 19));
  }
  const std::vector<bool> all(cases.size(), true), none(cases.size(), false);
  builder.AddTable(
      "t", table,
      {builder.Row(all, {}, values), builder.Row(none, {}, {}), builder.Row(all, {}, cut)},
      builder.Properties(properties));
  const auto database = OpenText(builder.Finish());
  const auto rows = database->FindTable("t")->Rows();
  ASSERT_TRUE(rows->Next());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(TextOf(rows->Field(i)), cases[i].read) << cases[i].name;
    EXPECT_EQ(rows->IsNull(i), cases[i].name == std::string_view("no date")) << cases[i].name;
  }
  EXPECT_EQ(rows->Double(cases.size() - 1), 0) << "of no date";
  ASSERT_TRUE(rows->Next());
  EXPECT_TRUE(rows->IsNull(2));
  EXPECT_FALSE(rows->Boolean(7));
  ASSERT_TRUE(rows->Next());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_THROW(rows->Field(i), RuntimeError) << cases[i].name;
  }
}

// A Jet 3 row of more than 256 bytes has a jump table; the one of the second row ends with an
// unused entry.
TEST(Jet3Rows, AreReadWithTheirJumpTables) {
  FileBuilder builder(0);
  const auto definition = builder.NewPage(), data = builder.NewPage();
  BuiltTable table;
  std::vector<std::string> longer, dummy;
  for (unsigned i = 0; i < 12; ++i) {
    table.columns.push_back({std::string("c").append(std::to_string(i)), 10, i, false, i, 100});
    longer.push_back(std::string(20 + 7 * i, static_cast<char>('a' + i)));
    dummy.push_back(i < 11 ? std::string(20, static_cast<char>('a' + i)) : std::string(30, 'z'));
  }
  table.max_columns = table.variable_columns = 12;
  table.data_pages = {data};
  table.row_count = 2;
  const std::vector<bool> all(12, true);
  builder.PutRows(data, definition,
                  {{builder.Row(all, "", longer)}, {builder.Row(all, "", dummy)}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("long_rows", definition);
  const test::ScratchFolder scratch;
  WriteWholeFile(scratch / "built.mdb", builder.Finish());
  const auto database = DatabaseFile::Open(scratch / "built.mdb");
  const auto rows = database->FindTable("long_rows")->Rows();
  for (const auto& expected : {longer, dummy}) {
    ASSERT_TRUE(rows->Next());
    for (std::size_t i = 0; i < 12; ++i) EXPECT_EQ(rows->Text(i), expected[i]);
  }
  if (test::HasMdbTools()) {
    test::ExpectSameAsMdbExport(*database, *database->FindTable("long_rows"));
  }
}

std::string ReadOneText(FileBuilder builder, const std::string& stored) {
  const auto definition = builder.NewPage(), data = builder.NewPage();
  BuiltTable table;
  table.columns = {{"text", 10, 0, false, 0, 100}};
  table.max_columns = table.variable_columns = 1;
  table.data_pages = {data};
  builder.PutRows(data, definition, {{builder.Row({true}, "", {stored})}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue("texts", definition);
  return Texts(*OpenText(builder.Finish())->FindTable("texts"), 0).at(0);
}

TEST(Jet4Text, IsReadCompressedUncompressedAndMixed) {
  const auto wide = [](std::u16string_view text) { return test::Utf16(text); };
  const std::string zero(1, '\0');
  struct Case {
    std::string stored;
    std::string text;
  };
  const std::vector<Case> cases{
      {"", ""},
      {"\xFF\xFE", "\uFEFF"},
      {"\xFF\xFE"
       "caf\xE9",
       "café"},
      {wide(u"Māhuta"), "Māhuta"},
      {wide(u"😀!"), "😀!"},
      {"\xFF\xFEM" + zero + wide(u"ā") + zero + "huta", "Māhuta"},
      {"\xFF\xFE" + zero + wide(u"日本") + zero + " and " + zero + wide(u"“"), "日本 and “"},
      {"\xFF\xFE" + zero + wide(u"\U0001F697") + zero + "x", "🚗x"},
      {wide(u"a") + "\x3D\xD8", "a\uFFFD"},  // half a surrogate pair
      {wide(u"ab") + "c", "ab"},             // half a character
      {"\xFF\xFE"
       "a" +
           zero + "\x01",
       "a"},  // half a character after a switch
      {"\xFF\xFE"
       "a" +
           zero + zero + "b",
       "ab"},  // nothing between two switches
  };
  for (const Case& c : cases) EXPECT_EQ(ReadOneText(FileBuilder(1), c.stored), c.text);
}

TEST(Jet3Text, IsReadByTheCodePageOfTheFile) {
  struct Case {
    unsigned code_page;
    std::string stored;
    std::string text;
  };
  const std::vector<Case> cases{
      {1252, "\x93quoted\x94 \x80", "“quoted” €"},
      {0, "caf\xE9", "café"},
      {1251, "\xCF\xF0\xE8", "При"},
      {1250, "\xE8\xE1ra", "čára"},
      {932, "\x93\xFA\x96{", "日本"},
      {1252, "plain", "plain"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ReadOneText(FileBuilder(0, c.code_page), c.stored), c.text) << c.code_page;
  }
}

}  // namespace
}  // namespace tenora::access
