#include "platform/runtime/format.h"

#include <gtest/gtest.h>

namespace tenora {
namespace {

TEST(FormatDate, KnowsEveryPatternTheSystemUses) {
  const Date date = Date::FromCalendar(2026, 3, 5, 14, 7, 9);
  const struct {
    const char* pattern;
    const char* text;
  } cases[] = {{"mm/dd/yyyy", "03/05/2026"},
               {"hh:mm:ss MM/DD/YYYY", "14:07:09 03/05/2026"},
               {"HH:NN", "14:07"},
               {"MMMYY", "Mar26"},
               {"DD/MM/YY hh:nn:ss", "05/03/26 14:07:09"},
               {"d mmmm yyyy", "5 March 2026"},
               {"dddd ddd", "Thursday Thu"},
               {"yyyy-mm-dd hh:nn:ss", "2026-03-05 14:07:09"}};
  for (const auto& c : cases) EXPECT_EQ(FormatDate(date, c.pattern), c.text);
}

TEST(FormatNumber, RoundsOnTheDecimalText) {
  const struct {
    double number;
    const char* pattern;
    const char* text;
  } cases[] = {{1234.56, "000000.00", "001234.56"},
               {0, "###0.00", "0.00"},
               {2.345, "###0.00", "2.35"},
               {1.005, "###0.00", "1.01"},
               {-1.005, "###0.00", "-1.01"},
               {-0.001, "###0.00", "0.00"},
               {999.999, "###0.00", "1000.00"},
               {12.3456, "###0.000", "12.346"},
               {1e15, "###0.00", "1000000000000000.00"},
               {0.5, "###0.00", "0.50"},
               {1234567, "000000.00", "1234567.00"},
               {7, "0000", "0007"}};
  for (const auto& c : cases) EXPECT_EQ(FormatNumber(c.number, c.pattern), c.text) << c.number;
  EXPECT_EQ(FormatNumber(Currency::FromTenThousandths(-123450), "###0.00", ","), "-12,35");
}

}  // namespace
}  // namespace tenora
