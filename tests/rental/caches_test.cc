#include "rental/caches.h"

#include "rental/rental_fixture.h"

namespace tenora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const char* const kTenants =
    "select reference, id_number, monthly_day, [Property Code], water_meter, tenancy.address1 as "
    "a1, tenancy.address2 as a2, tenancy.address3 as a3, reference, [property code], [when ended], "
    "last_inspection, lastrentrise,email,home_phone,work_phone,mobile,fax,[when started], bond, "
    "closed_yn, [current rent], every_amt, every_freq, property.address1, property.address2, "
    "property.address3, name, rentreviewdate from tenancy inner join property on "
    "tenancy.[property code] = property.code order by name, closed_yn desc";

class CacheLoads : public ScriptedRental {
 protected:
  // A row whose every column has a value.
  static std::map<std::string, Value> Tenancy(const std::string& reference) {
    std::map<std::string, Value> row{{"reference", reference}, {"name", "Tama O'Brien"},
                                     {"closed_yn", false},     {"current rent", Cents(36000)},
                                     {"bond", Cents(144000)},  {"monthly_day", std::int64_t{12}},
                                     {"every_freq", "Week"},   {"every_amt", std::int64_t{2}}};
    for (const char* date : {"when started", "when ended", "lastrentrise", "rentreviewdate"}) {
      row[date] = Day(2026, 5, 12);
    }
    for (const char* text :
         {"address1", "address2", "address3", "a1", "a2", "a3", "email", "home_phone", "work_phone",
          "mobile", "fax", "property code", "water_meter", "id_number"}) {
      row[text] = std::string(text);
    }
    return row;
  }
  void StoreTenancies(const std::vector<std::map<std::string, Value>>& tenancies) {
    FakeResult rows;
    for (const auto& [column, value] : Tenancy("")) rows.fields.push_back(column);
    for (const auto& tenancy : tenancies) {
      rows.rows.emplace_back();
      for (const auto& [column, value] : tenancy) rows.rows.back().push_back(value);
    }
    script.results[kTenants] = rows;
  }
  Caches& caches = session.caches;
};

TEST_F(CacheLoads, GoOnPastBadFieldsAndShowThemInOneBox) {
  auto bad = Tenancy("T1");
  for (const char* column : {"when ended", "bond", "monthly_day", "every_amt"}) {
    bad[column] = Null();
  }
  auto worse = Tenancy("T2");
  worse["every_amt"] = std::int64_t{40000};
  worse["lastrentrise"] = "soon";
  worse["when ended"] = Null();
  worse["email"] = Null();
  StoreTenancies({bad, worse, Tenancy("T3")});
  caches.CacheTenants(session.database);
  EXPECT_THAT(machine.dialogs.Texts(),
              ElementsAre("94 - Invalid use of Null: column \"every_amt\": tenancy T1\r\n\r\n"
                          "There are 6 such fields in the tables tenancy and property, by column:"
                          "\r\nbond: 1\r\nevery_amt: 1\r\nlastrentrise: 1\r\nmonthly_day: 1"
                          "\r\nwhen ended: 2"));
  EXPECT_EQ(machine.dialogs.shown().front().title, "CacheTenants");

  ASSERT_THAT(caches.Tenants, SizeIs(3));
  EXPECT_EQ(caches.Tenants[0].EndDate, Date());
  EXPECT_EQ(caches.Tenants[0].IdNumber, "id_number");
  EXPECT_EQ(caches.Tenants[1].FrequencyText, "40000 Weeks");
  EXPECT_EQ(caches.Tenants[1].Email, "");
  EXPECT_EQ(caches.Tenants[1].HomePhone, "home_phone");
  EXPECT_EQ(caches.Tenants[2].FrequencyText, "2 Weeks");
}

TEST_F(CacheLoads, KeepNothingOfTheTenancyThatHadTheIndex) {
  StoreTenancies({Tenancy("T1"), Tenancy("T2"), Tenancy("T3")});
  caches.CacheTenants(session.database);
  caches.Tenants[1].BalanceOwing = 12.5;
  caches.Tenants[1].LastPaymentTender = "Cash";
  auto other = Tenancy("T9");
  other["when ended"] = Null();
  StoreTenancies({Tenancy("T8"), other});
  caches.CacheTenants(session.database);
  ASSERT_THAT(caches.Tenants, SizeIs(2));
  EXPECT_EQ(caches.Tenants[1].Reference, "T9");
  EXPECT_EQ(caches.Tenants[1].BalanceOwing, 0);
  EXPECT_EQ(caches.Tenants[1].LastPaymentTender, "");
  EXPECT_EQ(caches.Tenants[1].EndDate, Date()) << "another tenancy's end date";
  EXPECT_THAT(machine.dialogs.Texts(),
              ElementsAre("94 - Invalid use of Null: column \"when ended\": tenancy T9"));
  machine.dialogs.ForgetShown();
  StoreTenancies({});
  caches.CacheTenants(session.database);
  EXPECT_THAT(caches.Tenants, IsEmpty());
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(CacheLoads, MakeNamesSafe) {
  const struct {
    const char* name;
    bool closed;
    const char* key;
    const char* display;
  } cases[] = {
      {" Smith/Jones, flat 2\\rear \"Red\" ", false, "Smith-Jones, flat 2-rear `Red`",
       "Smith-Jones, flat 2-rear `Red`"},
      {"Mei Huang", true, "Mei Huang", "(Closed) Mei Huang"},
      {"\t../..", false, "\t..-..", "\t..-.."},
      {"", true, "", "(Closed) "},
  };
  for (const auto& c : cases) {
    auto tenancy = Tenancy("T1");
    tenancy["name"] = c.name;
    tenancy["closed_yn"] = c.closed;
    StoreTenancies({tenancy});
    caches.CacheTenants(session.database);
    EXPECT_EQ(caches.Tenants[0].KeyName, c.key);
    EXPECT_EQ(caches.Tenants[0].DisplayName, c.display);
  }
}

TEST_F(CacheLoads, WriteTheFrequency) {
  const struct {
    int amount;
    const char* unit;
    const char* text;
  } cases[] = {{1, "Month", "Month"},
               {2, "Month", "2 Months"},
               {0, "Month", "0 Months"},
               {-1, "Week", "-1 Weeks"},
               {1, "", ""}};
  for (const auto& c : cases) {
    auto tenancy = Tenancy("T1");
    tenancy["every_amt"] = std::int64_t{c.amount};
    tenancy["every_freq"] = c.unit;
    StoreTenancies({tenancy});
    caches.CacheTenants(session.database);
    EXPECT_EQ(caches.Tenants[0].FrequencyText, c.text);
  }
}

TEST_F(CacheLoads, FindTheFirstMatchExactly) {
  auto closed = Tenancy("T6");
  closed["closed_yn"] = true;
  StoreTenancies({closed, Tenancy("T5"), Tenancy("T5")});
  caches.CacheTenants(session.database);
  EXPECT_EQ(caches.ReferenceByKeyName("Tama O'Brien"), "T6");
  EXPECT_EQ(caches.ReferenceByKeyName("tama o'brien"), "");
  EXPECT_EQ(caches.KeyNameByReference("T5"), "Tama O'Brien");
  EXPECT_EQ(caches.KeyNameByReference("t5"), "");
  EXPECT_EQ(caches.FindTenant("T5"), &caches.Tenants[1]);
  EXPECT_EQ(caches.FindTenant(""), nullptr);
  // In the memory of the list before, and in another order.
  StoreTenancies({Tenancy("T5"), closed, Tenancy("T5")});
  caches.CacheTenants(session.database);
  EXPECT_EQ(caches.FindTenant("T5"), caches.Tenants.data());
  caches.Tenants[1].Reference = "T7";
  EXPECT_EQ(caches.FindTenant("T7"), &caches.Tenants[1]);
}

TEST_F(CacheLoads, OfOwnersGoOnWithoutFeeOrFlag) {
  FakeResult rows{{"name", "postal1", "postal2", "postal3", "street1", "street2", "street3", "code",
                   "home", "work", "mobile", "fax", "email", "ird_number", "fee_percent",
                   "account_name", "account_number", "closedstatus", "fee_value"},
                  {}};
  const auto owner = [](Value name, Value fee) {
    std::vector<Value> row(19, Value("x"));
    row.front() = std::move(name);
    row[14] = 33.333333333;
    row[17] = std::holds_alternative<double>(fee) ? Value(true) : Value(Null());
    row.back() = std::move(fee);
    return row;
  };
  rows.rows = {owner(Null(), 1.0), owner("", 1.0), owner(" A/B ", 7.25), owner("C", Null()),
               owner("D", 2.0)};
  rows.rows.push_back(owner("E", "a lot"));
  script.results["select * from owner order by name"] = rows;
  caches.CacheOwners(session.database);
  ASSERT_THAT(caches.Owners, SizeIs(4));
  EXPECT_EQ(caches.Owners[0].Name, "A-B");
  EXPECT_EQ(caches.Owners[0].FeeValue, 7.25);
  EXPECT_EQ(caches.Owners[0].FeePercent, "33.33333");  // of single precision
  EXPECT_TRUE(caches.Owners[0].ClosedStatus);
  EXPECT_EQ(caches.Owners[1].FeeValue, std::nullopt);
  EXPECT_EQ(caches.Owners[1].AccountNumber, "x");
  EXPECT_FALSE(caches.Owners[1].ClosedStatus);
  EXPECT_EQ(caches.Owners[2].FeeValue, 2.0);
  EXPECT_EQ(caches.Owners[3].FeeValue, std::nullopt);
}

TEST_F(CacheLoads, LeaveNothingWhenTheQueryFails) {
  caches.Owners.resize(3);
  caches.Tenants.resize(3);
  caches.CacheOwners(session.database);
  caches.CacheTenants(session.database);
  EXPECT_THAT(caches.Owners, IsEmpty());
  EXPECT_THAT(caches.Tenants, IsEmpty());
  EXPECT_THAT(machine.dialogs.shown(), SizeIs(2));
}

}  // namespace
}  // namespace tenora::test
