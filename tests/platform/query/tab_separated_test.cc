#include <gtest/gtest.h>

#include <sstream>

#include "platform/query/query_test_support.h"

namespace tenora::query {
namespace {

TEST(PrintTabSeparated, KeepsARowOnALine) {
  SampleAgency agency;
  const auto rows = agency.database().OpenRecordset(
      "select 'a' & chr(9) & 'b' & chr(13) & chr(10) & '\\' as [odd name], true as yes, null as "
      "nothing, #3/5/2026# as day, #14:30:00 3/5/2026# as hour, ccur(1.5) as money, 1/4 as part "
      "union all select 'x', false, 'y', #3/5/2026#, #3/5/2026#, 0, 0",
      kForwardOnly, kReadOnly);
  std::ostringstream out;
  PrintTabSeparated(*rows, out);
  EXPECT_EQ(out.str(),
            "odd name\tyes\tnothing\tday\thour\tmoney\tpart\n"
            "a\\tb\\r\\n\\\\\t-1\t\t2026-03-05\t2026-03-05 14:30:00\t1.5\t0.25\n"
            "x\t0\ty\t2026-03-05\t2026-03-05\t0\t0\n");
}

}  // namespace
}  // namespace tenora::query
