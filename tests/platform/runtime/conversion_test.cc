#include "platform/runtime/conversion.h"

#include <gtest/gtest.h>

#include "support/errors.h"

namespace tenora {
namespace {

Value Text(const char* text) { return std::string(text); }

TEST(Conversion, ReadsNumbersFromText) {
  EXPECT_EQ(ToInt32(Text(" 42 ")), 42);
  EXPECT_EQ(ToInt32(Text("2.5")), 2);
  EXPECT_EQ(ToInt32(Text("3.5")), 4);
  EXPECT_EQ(ToInt32(Text("&h15")), 21);
  EXPECT_EQ(ToDouble(Text("+1.5")), 1.5);
  EXPECT_EQ(ToInt16(Value(true)), -1);
}

TEST(Conversion, RaisesTheNumberThatFitsTheFault) {
  for (const char* text : {"", "abc", "1x", "1 2", "inf", "nan", "&h", "0x10"}) {
    EXPECT_EQ(test::NumberOf([&] { ToInt32(Text(text)); }), 13) << text;
  }
  EXPECT_EQ(test::NumberOf([] { ToInt16(Value(std::int64_t{40000})); }), 6);
  EXPECT_EQ(test::NumberOf([] { ToInt32(Text("1e10")); }), 6);
  EXPECT_EQ(test::NumberOf([] { ToDate(Null()); }), 94);
  EXPECT_EQ(test::NumberOf([] { ToText(Null()); }), 94);
  EXPECT_EQ(test::NumberOf([] { ToBool(Text("")); }), 13);
  EXPECT_EQ(test::NumberOf([] { ToBool(Text("yes")); }), 13);
}

TEST(Conversion, ReadsBooleanWordsAndNumbers) {
  for (const char* text : {"True", "TRUE", "true", "1", "-1", "0.5"}) {
    EXPECT_TRUE(ToBool(Text(text))) << text;
  }
  for (const char* text : {"False", "FALSE", "0", "0.0"}) EXPECT_FALSE(ToBool(Text(text))) << text;
}

TEST(Conversion, ReadsDates) {
  const Date expected = Date::FromCalendar(2000, 12, 22);
  for (const char* text : {"22 Dec 2000", "2000-12-22", "22/12/2000", "22 December 2000"}) {
    EXPECT_EQ(ToDate(Text(text)), expected) << text;
  }
  EXPECT_EQ(ToDate(Text("2026-11-21 09:30:05")), Date::FromCalendar(2026, 11, 21, 9, 30, 5));
  EXPECT_EQ(ToDate(Text("2026-11-21T09:30:05")), Date::FromCalendar(2026, 11, 21, 9, 30, 5));
  EXPECT_EQ(ToDate(Text("21 OCT 2026")), Date::FromCalendar(2026, 10, 21));
  for (const char* text : {"", "2026-13-01", "30 Feb 2026", "yesterday", "1/2", "2026-11-21 9:"}) {
    EXPECT_EQ(test::NumberOf([&] { ToDate(Text(text)); }), 13) << text;
  }
}

TEST(Conversion, TakesTheLeadingNumberOfAText) {
  const struct {
    const char* text;
    double number;
  } cases[] = {{"12.5abc", 12.5}, {" 1 2 3", 123}, {"-4", -4}, {"abc", 0}, {"", 0},
               {".5", 0.5},       {"1e3", 1000},   {"inf", 0}, {"--1", 0}, {"1e999", 0}};
  for (const auto& c : cases) EXPECT_EQ(LeadingNumber(c.text), c.number) << c.text;
  EXPECT_EQ(SplitLeadingNumber("1,234.50").rest, ",234.50");
  EXPECT_EQ(SplitLeadingNumber(" 1 234.50 NZ D").rest, "NZD");
  EXPECT_EQ(SplitLeadingNumber("+$5").rest, "$5");
  EXPECT_EQ(SplitLeadingNumber("1e3").rest, "");
}

TEST(Conversion, JoinsValuesToText) {
  EXPECT_EQ(TextOf(Null()), "");
  EXPECT_EQ(TextOf(12.5), "12.5");
  EXPECT_EQ(TextOf(0.1 + 0.2), "0.3");
  EXPECT_EQ(TextOf(-0.0), "0");
  EXPECT_EQ(TextOf(true), "True");
  EXPECT_EQ(TextOf(Date::FromCalendar(2026, 11, 21, 14, 30)), "2026-11-21 14:30:00");
}

}  // namespace
}  // namespace tenora
