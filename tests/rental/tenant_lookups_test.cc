#include "rental/tenant_lookups.h"

#include "rental/rental_fixture.h"

namespace tenora::test {
namespace {

using testing::Contains;
using testing::IsEmpty;

class TenantLookups : public ScriptedRental {};

TEST_F(TenantLookups, FormatTheNextRentChange) {
  const std::string rest =
      " from rentchanges where tenantcode = 'T1' and changedate>=#00:00:00 11/21/2026#order by "
      "changedate asc";
  script.results["select top 1 changedate" + rest] = {{"changedate"}, {{Day(2026, 12, 1)}}};
  script.results["select top 1 changevalue" + rest] = {{"changevalue"}, {{Cents(123450)}}};
  EXPECT_EQ(NextRentChangeDate(session, "T1"), "1 December 2026");
  EXPECT_EQ(NextRentChangeValue(session, "T1"), "$1,234.50");
  script.results["select top 1 changedate" + rest].rows.clear();
  script.results["select top 1 changevalue" + rest].rows = {{Null()}};
  EXPECT_EQ(NextRentChangeDate(session, "T1"), "");
  EXPECT_EQ(NextRentChangeValue(session, "T1"), "");
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(TenantLookups, ShowAnInspectionsTimeUnlessItIsMidnight) {
  const std::string from =
      "select top 1 inspection_date from insp_schedule where tenant_code = "
      "'T1' and inspection_date ";
  FakeResult& next = script.results[from + "> #00:00:00 11/21/2026# order by inspection_date"];
  FakeResult& last =
      script.results[from + "<= #00:00:00 11/21/2026# order by inspection_date desc"];
  next = last = {{"inspection_date"}, {}};
  const struct {
    Value date;
    const char* text;
  } cases[] = {
      {Date::FromCalendar(2026, 11, 21, 14, 30), "21 November 2026 02:30 PM"},
      {Day(2026, 11, 21), "21 November 2026"},
      {Date::FromCalendar(2026, 11, 21, 0, 0, 40), "21 November 2026"},
      {Date::FromCalendar(2026, 12, 1, 0, 5), "1 December 2026 12:05 AM"},
      {Null(), "21 November 2026 09:30 AM"},
  };
  const auto shown = [&](bool is_next) {
    return InspectionDate(session, FindInspection(session, is_next, "T1"));
  };
  EXPECT_EQ(shown(true), "21 November 2026 09:30 AM");
  EXPECT_EQ(shown(false), "21 November 2026 09:30 AM");
  for (const auto& c : cases) {
    next.rows = {{c.date}};
    EXPECT_EQ(shown(true), c.text);
    last.rows = {{c.date}};
    EXPECT_EQ(shown(false), c.text);
  }
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(TenantLookups, SendTheStatementForAReceiptOrForTheLatestPayment) {
  TenantRecord tenant;
  tenant.Reference = "T'1";
  tenant.PropertyCode = "P1";
  tenant.LastPaymentTender = "Cash";
  AnswerLookup("select rent_group as result from Options ", "RENT");
  EXPECT_FALSE(LastPayment(session, tenant, 0));
  EXPECT_FALSE(LastPayment(session, tenant, -7));
  const std::string columns =
      "select top 1 recordnumber, tender, rent_weeks, date, amount, paid_to, [property code], tax "
      "from revenues where ";
  // The apostrophe of the code is doubled on the way out, as in every statement.
  EXPECT_THAT(script.asked,
              Contains(columns +
                       "([revenue group] = 'RENT' or [revenue group] in (select gl_code from "
                       "glcodes where type = 1 and pay_extra_charges <> 0)) and [property code] = "
                       "'P1' and tenant_code = 'T''1' order by date desc, recordnumber desc"));
  EXPECT_THAT(script.asked, Contains(columns + "recordnumber = -7"));
  EXPECT_THAT(script.asked,
              Contains("select sum(amount)+0 as paid from revenues where [revenue group] in "
                       "('xydhgus')  and [revenue group]  <> 'RENT' and tenant_code = 'T''1'"));
  EXPECT_EQ(tenant.LastPaymentTender, "") << "of an earlier payment";
}

}  // namespace
}  // namespace tenora::test
