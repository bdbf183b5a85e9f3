#include "platform/runtime/currency.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

TEST(Currency, RoundsToCentsWithHalvesToEven) {
  const struct {
    double from, to;
  } cases[] = {{2.345, 2.34}, {2.355, 2.36}, {-2.345, -2.34}, {-2.355, -2.36}, {2.3451, 2.35}};
  for (const auto& c : cases) {
    EXPECT_EQ(Currency::FromDouble(c.from).RoundedToCents(), Currency::FromDouble(c.to)) << c.from;
  }
}

TEST(Currency, ScalesExactlyAndRefusesOverflow) {
  EXPECT_EQ(Currency::FromUnits(100).Scaled(3, 7).RoundedToCents().ToText(), "42.86");
  EXPECT_EQ(Currency::FromTenThousandths(5).Scaled(1, 2).ten_thousandths(), 2);
  EXPECT_EQ(Currency::FromTenThousandths(7).Scaled(1, -2).ten_thousandths(), -4);
  const Currency most = Currency::FromTenThousandths(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(most.Scaled(1000, 1000), most);
  EXPECT_THROW(most + most, RuntimeError);
  EXPECT_THROW(most.Scaled(2, 1), RuntimeError);
  EXPECT_THROW(most.Scaled(1, 0), RuntimeError);
  EXPECT_THROW(Currency::FromDouble(1e18), RuntimeError);
  EXPECT_THROW(Currency::FromDouble(std::nan("")), RuntimeError);
}

// Rounding first to four decimals and then to two would make 0.01 of the first.
TEST(Currency, RoundsAScaledAmountOnce) {
  const Currency amount = Currency::FromTenThousandths(499996);
  EXPECT_EQ(amount.Scaled(1, 10000, 2, Halves::kAwayFromZero).ToText(), "0");
  EXPECT_EQ(Currency::FromUnits(1).Scaled(1, 200, 2).ToText(), "0");
  EXPECT_EQ(Currency::FromUnits(1).Scaled(1, 200, 2, Halves::kAwayFromZero).ToText(), "0.01");
  EXPECT_EQ(Currency::FromUnits(-1).Scaled(1, 200, 2, Halves::kAwayFromZero).ToText(), "-0.01");
  EXPECT_EQ(Currency::FromUnits(-1).Scaled(-3, 200, 2).ToText(), "0.02");
}

TEST(Currency, WritesPlainText) {
  const struct {
    std::int64_t count;
    const char* text;
  } cases[] = {
      {0, "0"},        {1000000, "100"},
      {-5000, "-0.5"}, {428600, "42.86"},
      {1, "0.0001"},   {std::numeric_limits<std::int64_t>::min(), "-922337203685477.5808"}};
  for (const auto& c : cases) {
    EXPECT_EQ(Currency::FromTenThousandths(c.count).ToText(), c.text);
  }
}

}  // namespace
}  // namespace tenora
