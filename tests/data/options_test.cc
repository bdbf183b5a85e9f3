#include "data/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "data/fake_engine.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCodesQuery =
    "select gl_code from glcodes where type = 1 and pay_extra_charges <> 0";

class OptionsTest : public testing::Test {
 protected:
  OptionsTest() { database_.OpenDatabase(); }

  test::FakeResult& Result(const std::string& sql) { return script_.results[sql]; }

  test::FakeScript script_;
  test::FakePlatform platform_{std::make_unique<test::FakeWorkspace>(script_)};
  Settings settings_{platform_.Parts()};
  Database database_{platform_.Parts(), settings_};
  Options options_{database_};
};

test::FakeResult OneValue(Value value) { return {.fields = {"result"}, .rows = {{value}}}; }

TEST_F(OptionsTest, ReadsWhatPaysFirstAnewAtEveryCall) {
  const std::string sql = "select WhatPaysFirst as result from Options ";
  Result(sql) = OneValue(std::int64_t{2});
  EXPECT_EQ(options_.WhatPaysFirst(), 2);
  Result(sql) = OneValue(std::string("1"));
  EXPECT_EQ(options_.WhatPaysFirst(), 1);
  Result(sql) = OneValue(Null{});
  EXPECT_EQ(options_.WhatPaysFirst(), 0);
  Result(sql) = OneValue(std::string("rent"));
  EXPECT_THROW(options_.WhatPaysFirst(), RuntimeError);
}

TEST_F(OptionsTest, KeepsTheRentGroupOnceThereIsOne) {
  const std::string sql = "select rent_group as result from Options ";
  Result(sql) = OneValue(Null{});
  EXPECT_EQ(options_.RentGroup(), "");
  Result(sql) = OneValue(std::string("RENT"));
  EXPECT_EQ(options_.RentGroup(), "RENT");
  Result(sql) = OneValue(std::string("OTHER"));
  EXPECT_EQ(options_.RentGroup(), "RENT");
}

TEST_F(OptionsTest, ListsExtraChargeCodesForAnInClause) {
  EXPECT_EQ(options_.ExtraChargeCodes(), "('xydhgus')");  // the query fails
  EXPECT_EQ(platform_.dialogs.Texts().size(), 1u);
  Result(kCodesQuery) = {.fields = {"gl_code"},
                         .rows = {{std::string("WATER")}, {std::string("O'D")}, {Null{}}}};
  EXPECT_EQ(options_.ExtraChargeCodes(), "('xydhgus','WATER','O''D','')");
  Result(kCodesQuery).rows.clear();
  EXPECT_EQ(options_.ExtraChargeCodes(), "('xydhgus','WATER','O''D','')");
  EXPECT_EQ(Options(database_).ExtraChargeCodes(), "('xydhgus')");
  EXPECT_EQ(script_.closed_sets, 2);
}

TEST_F(OptionsTest, LoadsTheMailServerOfTheFirstRow) {
  test::FakeResult row{
      .fields = {"SmtpSend", "SmtpAddress", "SmtpPort", "SmtpSSL", "SmtpUsername", "SmtpPassword",
                 "SmtpSender", "SmtpRecipient"},
      .rows = {{true, std::string("mail.example.net"), std::int64_t{587}, true, std::string("jo"),
                std::string("s3cret"), std::string("jo@example.net"), Null{}}}};
  Result("select * from options") = row;
  options_.SmtpRecipient = "left from before";
  options_.LoadOptions();
  EXPECT_TRUE(options_.SmtpSend);
  EXPECT_EQ(options_.SmtpAddress, "mail.example.net");
  EXPECT_EQ(options_.SmtpPort, 587);
  EXPECT_TRUE(options_.SmtpSSL);
  EXPECT_EQ(options_.SmtpUsername, "jo");
  EXPECT_EQ(options_.SmtpPassword, "s3cret");
  EXPECT_EQ(options_.SmtpSender, "jo@example.net");
  EXPECT_EQ(options_.SmtpRecipient, "");

  Result("select * from options").rows.clear();
  options_.LoadOptions();
  EXPECT_EQ(options_.SmtpAddress, "mail.example.net");  // without a row nothing changes
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre());
}

TEST_F(OptionsTest, GoesOnBehindAFieldThatCannotBeReadAndShowsNoPassword) {
  Result("select * from options") = {
      .fields = {"SmtpSend", "SmtpAddress", "SmtpPort", "SmtpSSL", "SmtpUsername", "SmtpPassword",
                 "SmtpSender", "SmtpRecipient"},
      .rows = {{std::string("maybe"), std::string("mail"), std::int64_t{65000}, Null{}, Null{},
                std::string("s3cret"), std::string("from"), std::string("to")}}};
  options_.LoadOptions();
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre("13 - Type mismatch", "6 - Overflow"));
  EXPECT_EQ(options_.SmtpPassword, "s3cret");
  EXPECT_EQ(options_.SmtpRecipient, "to");
  EXPECT_FALSE(options_.SmtpSend);
  EXPECT_FALSE(options_.SmtpSSL);
}

}  // namespace
}  // namespace tenora
