// The sample database, which Access's own engine would open, against an independent reader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access/other_readers.h"
#include "platform/runtime/format.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

std::size_t ColumnNamed(const Table& table, const std::string& name) {
  for (std::size_t i = 0; i < table.columns().size(); ++i) {
    if (table.columns()[i].name == name) return i;
  }
  throw std::out_of_range(name);
}

TEST(SampleDatabase, ListsTheUsersTablesInTheOrderOfTheCatalogue) {
  const auto database = DatabaseFile::Open(test::SampleDatabase());
  EXPECT_EQ(database->format(), Format::kJet4);
  EXPECT_THAT(
      database->TableNames(),
      testing::ElementsAre("owner", "property", "tenancy", "glcodes", "revenues", "rent_periods",
                           "rentchanges", "insp_schedule", "custom_fields", "options"));
  EXPECT_EQ(database->FindTable("TENANCY"), database->FindTable("tenancy"));
  EXPECT_NE(database->FindTable("msysobjects"), nullptr);
  EXPECT_EQ(database->FindTable("tenancies"), nullptr);
}

TEST(SampleDatabase, ReadsEveryFieldAsAnIndependentReaderDoes) {
  if (!test::HasMdbTools()) GTEST_SKIP() << "mdb-export is not installed";
  const auto database = DatabaseFile::Open(test::SampleDatabase());
  for (const std::string& name : database->TableNames()) {
    test::ExpectSameAsMdbExport(*database, *database->FindTable(name));
  }
}

// The rental data marks a tenancy without an end by the year 1234, which mdb-export cannot print.
TEST(SampleDatabase, KeepsDatesOfTheYear1234Exact) {
  const auto database = DatabaseFile::Open(test::SampleDatabase());
  const Table& tenancy = *database->FindTable("tenancy");
  const std::size_t ended = ColumnNamed(tenancy, "when ended");
  int open = 0;
  for (const auto rows = tenancy.Rows(); rows->Next();) {
    if (rows->IsNull(ended)) continue;
    const Date date = std::get<Date>(rows->Field(ended));
    if (date.Year() >= 1900) continue;
    EXPECT_EQ(rows->Double(ended), -243249.0);
    EXPECT_EQ(FormatDate(date, "dd/mm/yyyy"), "01/01/1234");
    ++open;
  }
  EXPECT_GT(open, 0);
}

TEST(SampleDatabase, KnowsTheIndexesOfATable) {
  const auto database = DatabaseFile::Open(test::SampleDatabase());
  const Table& fields = *database->FindTable("custom_fields");
  ASSERT_EQ(fields.indexes().size(), 1U);
  const Index& key = fields.indexes()[0];
  EXPECT_EQ(key.name, "PrimaryKey");
  EXPECT_TRUE(key.unique && key.primary);
  std::vector<std::string> columns;
  for (const IndexColumn& part : key.columns) columns.push_back(fields.columns()[part.column].name);
  EXPECT_THAT(columns, testing::ElementsAre("parenttype", "parentcode", "fieldcode"));
}

TEST(SampleDatabase, CursorOutlivesTheDatabase) {
  auto database = DatabaseFile::Open(test::SampleDatabase());
  const auto rows = database->FindTable("owner")->Rows();
  database.reset();
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Text(0), "OW0001");
}

}  // namespace
}  // namespace tenora::access
