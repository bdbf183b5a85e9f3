// The statements that the system itself sends, verbatim, over the sample agency. The expected rows
// were read from the file by other means.

#include <gtest/gtest.h>

#include "platform/query/query_test_support.h"

namespace tenora::query {
namespace {

TEST(SampleStatements, GiveTheRowsOfTheFile) {
  SampleAgency agency;
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"select gl_code from glcodes where type = 1 and pay_extra_charges <> 0",
       {"WATER", "DAMAGE"}},
      {"select top 1 changedate from rentchanges where tenantcode = 'T00020' and "
       "changedate>=#00:00:00 11/21/2026#order by changedate asc",
       {"2027-01-10"}},
      {"select top 1 changevalue from rentchanges where tenantcode = 'T00020' and "
       "changedate>=#00:00:00 11/21/2026#order by changedate asc",
       {"420"}},
      {"select top 1 inspection_date from insp_schedule where tenant_code = 'T00002' and "
       "inspection_date > #00:00:00 11/21/2026# order by inspection_date",
       {"2026-12-15 14:30:00"}},
      {"select top 1 inspection_date from insp_schedule where tenant_code = 'T00001' and "
       "inspection_date <= #00:00:00 11/21/2026# order by inspection_date desc",
       {"2026-08-16"}},
      {"select top 1 recordnumber, tender, rent_weeks, date, amount, paid_to, [property code], tax "
       "from revenues where recordnumber = 1630",
       {"1630|Cash|1|2026-11-14|27|2026-11-21|PR00020|3.52"}},
      {"select top 1 recordnumber, tender, rent_weeks, date, amount, paid_to, [property code], tax "
       "from revenues where ([revenue group] = 'RENT' or [revenue group] in (select gl_code from "
       "glcodes where type = 1 and pay_extra_charges <> 0)) and [property code] = 'PR00020' and "
       "tenant_code = 'T00001' order by date desc, recordnumber desc",
       {"1636|EFTPOS|1|2026-11-17|680|2026-11-24|PR00020|88.7"}},
      {"select sum(amount)+0 as paid from revenues where [revenue group] = 'RENT' and tenant_code "
       "= 'nobody'",
       {"null"}},
      {"SELECT monthly_day, reference, [when started], [when ended], closed_yn, every_amt, "
       "every_freq, [Current rent] FROM Tenancy where reference = 'T00001'",
       {"4|T00001|2024-11-04|1234-01-01|False|1|Week|680"}},
      {"select parent_property as result from property  where code = 'PR00001'", {"PR00001"}},
      {"select * from custom_fields where parenttype=201 and parentcode = 'T00012'",
       {"T00012|201|Pet|Cat called “Miso”", "T00012|201|CarPlate|ABC112"}},
      {"select * from custom_fields where parenttype=202 and parentcode = 'PR00001' and fieldcode "
       "= 'NxtReceipt'",
       {}},
      {"select gl_code as result from glcodes  where gl_code = 'NxtReceipt' and type = 202", {}},
      // A tenant's name with an apostrophe, doubled as the repair of statements doubles it.
      {"select reference from tenancy where name = 'Aroha O''Brien'", {"T00027"}},
      {"select reference from tenancy where name = 'aroha o''brien  '", {"T00027"}},
      {"select reference from tenancy where reference = 'T''00001'", {}},
      {"select reference from tenancy where closed_yn = -1 order by reference",
       {"T00006", "T00009", "T00018", "T00027", "T00036"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(agency.Rows(c.sql), c.rows) << c.sql;
}

}  // namespace
}  // namespace tenora::query
