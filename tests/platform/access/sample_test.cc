// The sample database, compared with an independent reader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access/other_readers.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

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

}  // namespace
}  // namespace tenora::access
