// The statements that the system itself sends, as they stand, over the sample agency. What they
// must give was read from the file by other means.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "platform/query/query_test_support.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/currency.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;

TEST(SampleStatements, GiveTheRowsOfTheFile) {
  SampleAgency agency;
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"select * from glcodes where type >200",
       {"MGMT|Management fee|201|False|False|True|2025-11-21|0|0",
        "REPAIR|Repairs and maintenance|201|False|False|True|2025-11-21|0|0",
        "INSURE|Insurance|203|True|False|True|2025-11-21|0|0",
        "ParkingBay|Parking bay|202|False|False|True|2025-11-21|0|0"}},
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
      {"select top 1 amount as result from revenues  where [revenue group] = 'RENT' and [property "
       "code] = 'PR00020' and tenant_code = 'T00001' order by date desc, recordnumber desc",
       {"680"}},
      {"select sum(amount)+0 as paid from revenues where [revenue group] = 'RENT' and tenant_code "
       "= 'T00001'",
       {"67320"}},
      {"select sum(amount)+0 as paid from revenues where [revenue group] in ('WATER', 'DAMAGE')  "
       "and [revenue group]  <> 'RENT' and tenant_code = 'T00001'",
       {"75"}},
      {"select sum(amount)+0 as paid from revenues where [revenue group] = 'RENT' and tenant_code "
       "= 'nobody'",
       {"null"}},
      {"select top 1 period_from as result from rent_periods  where tenant_code = 'T00001' order "
       "by period_from desc",
       {"2026-12-07"}},
      {"select top 1 period_to as result from rent_periods  where tenant_code = 'T00001' order by "
       "period_from desc",
       {"2026-12-13"}},
      {"select rent_group as result from Options ", {"RENT"}},
      {"select owner.name as result from owner inner join property on owner.code = "
       "property.ownercode Where property.code = 'PR00020'",
       {"Søren Ngata"}},
      {"select [when ended] as result from tenancy  where reference = 'T00001'", {"1234-01-01"}},
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

TEST(SampleStatements, LoadTheTenantsByNameClosedOnesFirst) {
  SampleAgency agency;
  const auto rows = agency.database().OpenRecordset(
      "select reference, id_number, monthly_day, [Property Code], water_meter, tenancy.address1 as "
      "a1, tenancy.address2 as a2, tenancy.address3 as a3, reference, [property code], [when "
      "ended], last_inspection, lastrentrise,email,home_phone,work_phone,mobile,fax,[when "
      "started], "
      "bond, closed_yn, [current rent], every_amt, every_freq, property.address1, "
      "property.address2, property.address3, name, rentreviewdate from tenancy inner join property "
      "on tenancy.[property code] = property.code order by name, closed_yn desc",
      kForwardOnly, kReadOnly);
  std::vector<std::string> references;
  for (; !rows->EndOfFile(); rows->MoveNext()) {
    references.push_back(TextOf(rows->Field("Reference")));
    if (references.back() != "T00006") continue;
    EXPECT_EQ(rows->Field("closed_yn"), Value(true));
    EXPECT_EQ(rows->Field("address1"), Value(std::string("189 Karaka Street")));
    EXPECT_EQ(rows->Field("RentReviewDate").index(), Value(Date()).index());
  }
  // One tenant has no property and is left out.
  EXPECT_EQ(references.size(), 41u);
  EXPECT_THAT(std::vector(references.begin(), references.begin() + 4),
              ElementsAre("T00007", "T00027", "T00032", "T00031"));
  // Two tenants named Tama O'Brien: the closed one comes first.
  const auto closed = std::find(references.begin(), references.end(), "T00006");
  ASSERT_LT(closed + 1, references.end());
  EXPECT_EQ(closed[1], "T00005");
}

TEST(SampleStatements, LoadOwnersAndProperties) {
  SampleAgency agency;
  EXPECT_EQ(agency.Rows("select * from owner order by name").size(), 12u);
  const auto properties = agency.Rows(
      "select property.code, name, ClosedStatus, email from Property inner join owner on "
      "property.ownercode = owner.code order by property.Code");
  ASSERT_EQ(properties.size(), 24u);  // one property has no owner
  EXPECT_EQ(properties[1], "PR00002|Søren Ngata|False|owner6@example.test");
}

// Payments of one tenant, added up from the rows that another reader prints.
TEST(SampleStatements, AgreeWithAnotherReaderForEveryTenant) {
  const test::ProcessResult exported =
      test::RunProcess({"mdb-export", "-H", "-d", "\t", "-Q", "-T", "%Y-%m-%d",
                        test::SampleDatabase().string(), "revenues"});
  if (exported.status == 127) GTEST_SKIP() << "mdb-export is not installed";
  std::map<std::string, Currency> paid;
  std::map<std::string, std::pair<std::string, std::int64_t>> latest;  // date, record number
  for (const std::string& line : Split(exported.output, "\n")) {
    const std::vector<std::string> fields = Split(line, "\t");
    if (fields.size() < 10 || fields[8] != "RENT") continue;
    const std::string& tenant = fields[9];
    paid[tenant] += ToCurrency(fields[4]);
    latest[tenant] = std::max(latest[tenant], {fields[1], std::int64_t{ToInt32(fields[0])}});
  }
  ASSERT_GT(paid.size(), 30u);
  SampleAgency agency;
  for (const auto& [tenant, sum] : paid) {
    const std::string where =
        " from revenues where [revenue group] = 'RENT' and tenant_code = '" + tenant + "'";
    EXPECT_EQ(agency.Single("select sum(amount)+0 as paid" + where), Value(sum)) << tenant;
    EXPECT_EQ(agency.Single("select top 1 recordnumber" + where +
                            " order by date desc, recordnumber desc"),
              Value(latest[tenant].second))
        << tenant;
  }
}

}  // namespace
}  // namespace tenora::query
