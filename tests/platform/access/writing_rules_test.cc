// Writing obeys required columns, validation rules and relationships.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access/file_builder.h"
#include "platform/access/other_readers.h"
#include "platform/access/writing_support.h"

namespace tenora::test {
namespace {

using access::ColumnValue;
using access::RowId;
using access::WriteTransaction;
using testing::StartsWith;

// Tables with rules in their definitions, in the catalogue and in relationships.
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
    WriteWholeFile(path_, builder.Finish());
    transaction_ = WriteTransaction::Begin(path_);
  }

  RowId Insert(const char* table, const std::vector<ColumnValue>& values) {
    return transaction_->Table(table).Insert(values);
  }
  template <typename Step>
  static std::string Refusal(Step step) {
    const std::string error = ErrorOf(step);
    return error.empty() ? "done" : error;
  }

  std::string Update(const char* table, RowId row, const ColumnValue& value) {
    return Refusal([&] { transaction_->Table(table).Update(row, {value}); });
  }
  std::string Delete(const char* table, RowId row) {
    return Refusal([&] { transaction_->Table(table).Delete(row); });
  }

  ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_ / "rules.mdb";
  std::unique_ptr<WriteTransaction> transaction_;
};

TEST_F(WritingByRules, RefusesValuesThatTheColumnsDoNotAllow) {
  const RowId row = Insert("things", {{"must", Number(1)}, {"should", Number(2)}});
  const RowId ruled = Insert("loose", {{"id", Number(1)}});
  const struct {
    const char* table;
    std::vector<ColumnValue> values;
    const char* refusal;
  } cases[] = {
      {"things", {{"must", Null()}}, "3314 - You must enter a value in the 'things.must' field."},
      {"things",
       {{"should", Null()}},
       "3314 - You must enter a value in the 'things.should' field."},
      {"things",
       {{"text", Text("")}},
       "3315 - Field 'things.text' cannot be a zero-length string."},
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
            "3073 - Operation must use an updateable query. Table 'ruled': column 'b' has the "
            "validation rule >0, which cannot be evaluated.");
  EXPECT_THAT(
      Refusal([&] {
        Insert("all_ruled", {{"a", Number(1)}});
      }),
      testing::HasSubstr("3073 - Operation must use an updateable query. Table 'all_ruled': "
                         "its rows have the validation rule a<9"));
  EXPECT_THAT(Refusal([&] { Insert("torn", {}); }),
              testing::AllOf(StartsWith("3049"), testing::HasSubstr("table 'torn'")));
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
  const char* const required =
      "3201 - You cannot add or change a record because a related record is required in table "
      "'parent'.";
  const char* const related =
      "3200 - The record cannot be deleted or changed because table 'strict' includes related "
      "records.";
  const char* const cascades =
      "3073 - Operation must use an updateable query. Table 'parent': the relationship 'r2' "
      "cascades the change to table 'cascading'";
  EXPECT_THAT(Refusal([&] { Insert("strict", {{"up", Number(9)}}); }), StartsWith(required));
  EXPECT_THAT(Update("strict", child, {"up", Number(9)}), StartsWith(required));
  EXPECT_EQ(Update("strict", child, {"id", Number(7)}), "done");
  EXPECT_THAT(Delete("parent", one), StartsWith(related));
  EXPECT_THAT(Update("parent", one, {"id", Number(8)}), StartsWith(related));
  EXPECT_EQ(Update("parent", one, {"other", Number(8)}), "done");
  EXPECT_THAT(Delete("parent", two), StartsWith(cascades));
  EXPECT_THAT(Update("parent", two, {"id", Number(8)}), StartsWith("3073"));
  EXPECT_EQ(Update("parent", three, {"id", Number(99)}), "done");
  EXPECT_EQ(Delete("parent", three), "done");
  EXPECT_THAT(Delete("tree", root), StartsWith("3200"));
  EXPECT_EQ(Delete("tree", leaf), "done");
  EXPECT_EQ(Delete("tree", root), "done");
  EXPECT_EQ(Delete("strict", child), "done");
  EXPECT_EQ(Delete("parent", one), "done");
  transaction_->Commit();
  for (const access::Finding& finding : FindingsIn(path_)) {
    EXPECT_THAT(finding.Text(), testing::HasSubstr("table 'torn'"));
  }
}

// The file was made by a Java library for such files, with relationships and rules as the engine
// stores them.
TEST(RulesOfAnotherWriter, AreKept) {
  const ProcessResult content = RunProcess(
      {"xz", "--decompress", "--stdout", SourceDir() / "tests/platform/access/files/rules.mdb.xz"});
  ASSERT_EQ(content.status, 0) << content.errors;
  const ScratchDatabase database(content.output);
  auto transaction = WriteTransaction::Begin(database.path());
  const auto insert = [&](const char* table, const std::vector<ColumnValue>& values) {
    return ErrorOf([&] { transaction->Table(table).Insert(values); });
  };
  const auto update = [&](const char* table, std::int64_t id, const ColumnValue& value) {
    return ErrorOf([&] {
      auto& rows = transaction->Table(table);
      rows.Update(rows.Find({{"id", id}}).at(0), {value});
    });
  };
  const auto remove = [&](const char* table, std::int64_t id) {
    return ErrorOf([&] {
      auto& rows = transaction->Table(table);
      rows.Delete(rows.Find({{"id", id}}).at(0));
    });
  };
  const std::string required = "3201 - You cannot add or change a record because a related record ";
  const std::string related = "3200 - The record cannot be deleted or changed because table ";
  const std::string refused = "3073 - Operation must use an updateable query. Table ";
  const struct {
    std::string error, start;
  } cases[] = {
      {insert("flat", {{"id", Number(20)}, {"landlord", Number(7)}}),
       required + "is required in table 'landlord'."},
      {insert("flat", {{"id", Number(20)}, {"landlord", Number(3)}}), ""},
      {insert("flat", {{"id", Number(21)}}), ""},
      {update("flat", 12, {"landlord", Number(8)}), required + "is required in table 'landlord'."},
      {update("flat", 12, {"landlord", Number(3)}), ""},
      {remove("landlord", 1), related + "'flat' includes related records."},
      {update("landlord", 3, {"id", Number(5)}), related + "'flat' includes related records."},
      {remove("landlord", 2), ""},
      {remove("flat", 10), refused + "'flat': the relationship"},
      {remove("flat", 11), ""},
      {insert("spare_key", {{"flat", Number(99)}}), required + "is required in table 'flat'."},
      {insert("visit", {{"landlord", Number(98)}}), ""},
      {insert("deposit", {{"flat", Number(12)}}),
       refused + "'deposit': column 'amount' has the validation rule >0"},
      {insert("meter", {}),
       refused + "'meter': its rows have the validation rule [newest]>=[oldest]"},
      {insert("landlord", {{"id", Number(6)}}),
       "3314 - You must enter a value in the 'landlord.name' field."},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(c.error, StartsWith(c.start));
    EXPECT_EQ(c.error.empty(), c.start.empty()) << c.error;
  }
  transaction->Commit();
  ExpectHealthy(database.path());
  if (!HasMdbTools()) return;
  const auto file = access::DatabaseFile::Open(database.path());
  for (const char* table : {"landlord", "flat", "visit"}) {
    ExpectSameAsMdbExport(*file, *file->FindTable(table));
  }
}

}  // namespace
}  // namespace tenora::test
