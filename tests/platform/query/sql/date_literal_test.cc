#include "platform/query/sql/date_literal.h"

#include <gtest/gtest.h>

#include "platform/runtime/value.h"

namespace tenora::query {
namespace {

TEST(ReadDateLiteral, PutsTheMonthFirst) {
  const struct {
    const char* text;
    const char* date;  // nullptr: no date
  } kCases[] = {
      {"03/05/2026", "2026-03-05"},
      {"14:30:00 03/05/2026", "2026-03-05 14:30:00"},
      {"03/05/2026 14:30", "2026-03-05 14:30:00"},
      {"00:00:00 11/21/2026", "2026-11-21"},
      {"2026-11-21", "2026-11-21"},
      {"2026-11-21 14:30:05", "2026-11-21 14:30:05"},
      {"21/11/2026", "2026-11-21"},
      {"21 Nov 2026", "2026-11-21"},
      {"November 21, 2026", "2026-11-21"},
      {"1/2/29", "2029-01-02"},
      {"1/2/30", "1930-01-02"},
      {"1/1/1234", "1234-01-01"},
      {"2:05 PM 1/2/2026", "2026-01-02 14:05:00"},
      {"12:00 am 1/2/2026", "2026-01-02"},
      {"2/29/2024", "2024-02-29"},
      {"2/29/2026", nullptr},
      {"13/13/2026", nullptr},
      {"25:00 1/2/2026", nullptr},
      {"14:60", nullptr},
      {"1/2", nullptr},
      {"1/2-2026", nullptr},
      {"1//2/2026", nullptr},
      {"", nullptr},
      {"tomorrow", nullptr},
      {"1/2/99999", nullptr},
      {"1/2/2026 1/2/2026", nullptr},
  };
  for (const auto& c : kCases) {
    const std::optional<Date> date = ReadDateLiteral(c.text);
    EXPECT_EQ(date ? TextOf(*date) : "none", c.date == nullptr ? "none" : c.date) << c.text;
  }
}

}  // namespace
}  // namespace tenora::query
