#include "merge/future_dates.h"

#include "merge_fixture.h"

namespace tenora {
namespace {

constexpr const char* kMessage = "Error inserting future date.  Possible incorrect format";

class InsertFutureDatesTest : public test::MergeTest {};

TEST_F(InsertFutureDatesTest, CountsFromToday) {
  const struct {
    int year, month, day;
    const char* code;
    const char* expected;
  } cases[] = {
      {2026, 12, 20, "<<FutureDate:14:Days>>", "3 January 2027"},
      {2026, 11, 21, "<<FutureDate:2:Weeks>>", "5 December 2026"},
      {2026, 1, 31, "<<FutureDate:1:Months>>", "28 February 2026"},
      {2028, 2, 29, "<<FutureDate:1:Years>>", "28 February 2029"},
      {2026, 3, 1, "<<FutureDate:-1:Days>>", "28 February 2026"},
      {2026, 11, 21, "<<FutureDate:1.5:Days>>", "23 November 2026"},  // halves to even: 2
      {2026, 11, 21, "<<FutureDate: 1 :Days:more>>", "22 November 2026"},
      {2026, 11, 21, "<<FutureDate:1:days>>", ""},  // an unknown unit
      {2026, 11, 21, "<<FutureDate:1:Days>> <<FutureDate:9:days>>",
       "22 November 2026 22 November 2026"},
      {2026, 11, 21, "<<FutureDate:1:Days>> <<FutureDate:1:Days>> <<FutureDate:2:Days>>",
       "22 November 2026 22 November 2026 23 November 2026"},
  };
  for (const auto& c : cases) {
    SetNow(c.year, c.month, c.day, 23, 59);
    Letter(c.code);
    InsertFutureDates(target_);
    EXPECT_EQ(Shown(), c.expected) << c.code;
  }
  EXPECT_THAT(Boxes(), testing::IsEmpty());
}

TEST_F(InsertFutureDatesTest, StopsAtABadCodeWithOneMessage) {
  for (const char* code :
       {"<<FutureDate:many:Days>>", "<<FutureDate::Days>>", "<<FutureDate:14>>", "<<FutureDate:>>",
        "<<FutureDate:99999999999:Days>>", "<<FutureDate:2000000000:Months>>",
        "<<FutureDate:9000:Years>>", "<<FutureDate:1e300:Weeks>>"}) {
    machine_.dialogs.ForgetShown();
    Letter(std::string("<<FutureDate:1:Days>> ").append(code).append(" <<FutureDate:2:Days>>"));
    InsertFutureDates(target_);
    EXPECT_EQ(Shown(), std::string("22 November 2026 ").append(code) + " <<FutureDate:2:Days>>");
    EXPECT_THAT(Boxes(), testing::ElementsAre(kMessage));
  }
}

TEST_F(InsertFutureDatesTest, LeavesAnUnclosedCodeAndEnds) {
  Letter("<<FutureDate:1:Days>> <<FutureDate:2:Days");
  InsertFutureDates(target_);
  EXPECT_EQ(Shown(), "22 November 2026 <<FutureDate:2:Days");
  EXPECT_THAT(Boxes(), testing::IsEmpty());
}

}  // namespace
}  // namespace tenora
