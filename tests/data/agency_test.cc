// Database and options over the real engine and the sample agency's file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "data/options.h"
#include "data/sql_text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AgencyTest : public testing::Test {
 protected:
  std::filesystem::path File() const { return platform_.ProgramFolder() / "property.mdb"; }

  test::FakePlatform platform_;
  Settings settings_{platform_.Parts()};
  Database database_{platform_.Parts(), settings_};
  Options options_{database_};
};

TEST_F(AgencyTest, GivesTheSharedOptions) {
  platform_.InstallSampleDatabase();
  database_.OpenDatabase();
  options_.LoadOptions();
  EXPECT_EQ(options_.WhatPaysFirst(), 0);
  EXPECT_EQ(options_.RentGroup(), "RENT");
  EXPECT_EQ(options_.ExtraChargeCodes(), "('xydhgus','WATER','DAMAGE')");
  EXPECT_FALSE(options_.SmtpSend);
  EXPECT_EQ(options_.SmtpAddress, "127.0.0.1");
  EXPECT_EQ(options_.SmtpPort, 2525);
  EXPECT_EQ(options_.SmtpUsername, "");
  EXPECT_EQ(options_.SmtpSender, "office@example.test");
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(AgencyTest, AnswersLookUpsAsTheProgramWritesThem) {
  platform_.InstallSampleDatabase();
  database_.OpenDatabase();
  const struct {
    std::string field, table, clause, text;
  } cases[] = {
      {"name", "tenancy", "where reference='T00001'", "Noor Whaanga"},
      {"top 1 reference", "tenancy", "where closed_yn=false order by reference", "T00001"},
      {"[address1]", "tenancy", "where reference = 'T00001'", "none"},
      {"reference", "tenancy", "where name = 'Tama O'Brien' and closed_yn = false", "T00005"},
      {"reference", "tenancy", "where name = 'O'Brien'", "none"},
      {"reference", "tenancy",
       "where [when started] = " + SQLDate(Date::FromCalendar(2024, 11, 17)), "T00002"},
      {"count(*)", "tenancy", "where reference like 'T0000?'", "9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(database_.LookupText(c.field, c.table, c.clause, "none"), c.text) << c.clause;
  }
  EXPECT_EQ(database_.LookupDate("[when started]", "tenancy", "where reference='T00001'", Date()),
            Date::FromCalendar(2024, 11, 4));
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(AgencyTest, ReportsAFileThatIsNoDatabaseAndThenEveryReadOfIt) {
  const struct {
    std::function<void()> make;
    int number;
  } cases[] = {
      {[] {}, 3024},
      {[&] { WriteWholeFile(File(), ""); }, 3343},
      {[&] { WriteWholeFile(File(), "not a database"); }, 3343},
      {[&] { WriteWholeFile(File(), ReadWholeFile(test::SampleDatabase()).substr(0, 5000)); },
       3343},
      {[&] {
         std::filesystem::remove(File());
         std::filesystem::create_directory(File());
       },
       3343},
  };
  for (const auto& c : cases) {
    c.make();
    platform_.dialogs.ForgetShown();
    database_.OpenDatabase();
    EXPECT_FALSE(database_.IsOpen());
    EXPECT_EQ(options_.RentGroup(), "");
    EXPECT_THAT(platform_.dialogs.Texts(),
                ElementsAre(testing::StartsWith("\r\n\r\nGeneral Errors...\r\n\r\n" +
                                                std::to_string(c.number) + " - "),
                            testing::HasSubstr("91 - Object variable")));
    EXPECT_THAT(platform_.dialogs.Texts()[0], testing::HasSubstr(File().string()));
  }
}

TEST_F(AgencyTest, ReportsAStatementOfUnknownNamesAndGoesOn) {
  platform_.InstallSampleDatabase();
  database_.OpenDatabase();
  EXPECT_EQ(database_.LookupText("reference", "no_such_table", "", "none"), "none");
  EXPECT_EQ(database_.LookupText("no_such_field", "tenancy", "", "none"), "none");
  EXPECT_EQ(database_.LookupText("reference", "tenancy", "where where", "none"), "none");
  EXPECT_EQ(platform_.dialogs.shown().size(), 3u);
  for (const std::string& text : platform_.dialogs.Texts()) {
    EXPECT_THAT(text, testing::StartsWith(File().string() + "\r\n\r\nGeneral Errors...\r\n\r\n3"));
  }
  EXPECT_EQ(database_.LookupText("name", "tenancy", "where reference='T00001'", ""),
            "Noor Whaanga");
}

}  // namespace
}  // namespace tenora
