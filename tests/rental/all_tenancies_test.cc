#include "rental/all_tenancies.h"

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "rental/detached_session.h"
#include "rental/details_comparison.h"
#include "rental/rent_account.h"
#include "rental/rental_fixture.h"

namespace tenora::test {
namespace {

using testing::IsEmpty;

const FieldCodes kFields{{"Pet", "pet", "Guarantor", "Odd"}, {"AlarmCode", "Odd"}, {"Salutation"}};

class AllDetails : public SampleAgency {
 protected:
  void Run(std::initializer_list<const char*> statements) {
    for (const char* statement : statements) session.database.ExecuteSQL(statement);
    ASSERT_THAT(machine.dialogs.Texts(), IsEmpty());
  }
  void ExpectNoDifference() {
    session.caches.Load(session.database);
    for (const auto& [read, looked_up] : Differences(session, kFields)) {
      EXPECT_EQ(read, looked_up);
    }
    EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
  }
};

TEST_F(AllDetails, AreThoseOfTheLookUps) { ExpectNoDifference(); }

TEST_F(AllDetails, AreThoseOfTheLookUpsInHardCases) {
  Run({
      // A tenancy without any rows; codes that the engine takes for equal.
      "insert into tenancy(reference, name, [property code], closed_yn, every_amt, every_freq, "
      "[current rent], bond, monthly_day, [when started], [when ended], lastrentrise, "
      "rentreviewdate) values ('NEW', 'New', 'pr00001', 0, 1, 'Week', 1, 1, 1, #1/1/2026#, "
      "#1/1/1234#, #1/1/2026#, #1/1/1234#)",
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due, extra_charges) "
      "values ('t00003 ', #11/20/2026#, #11/26/2026#, 100.05, 7)",
      // Of another property, of the same moment, without amounts.
      "insert into revenues(recordnumber, date, amount, tax, [property code], [revenue group], "
      "tenant_code, tender) values (90001, #11/20/2026#, 10, 1, 'PR00009', 'RENT', 't00004', 'A')",
      "insert into revenues(recordnumber, date, amount, tax, [property code], [revenue group], "
      "tenant_code, tender) values (90002, #11/20/2026#, null, 1, 'PR00005', 'rent', 'T00005', "
      "'B')",
      "insert into revenues(recordnumber, date, amount, tax, [property code], [revenue group], "
      "tenant_code, tender) values (90003, #11/20/2026#, 12, null, 'PR00005', 'WATER', 'T00005', "
      "'C')",
      "insert into revenues(recordnumber, date, amount, tax, [property code], [revenue group], "
      "tenant_code, tender) values (90005, null, 12, null, 'PR00006', 'RENT', 'NEW', 'D')",
      // Bad rows of single tenancies.
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due) "
      "values ('T00007', null, #11/26/2026#, 100)",
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due) "
      "values ('T00008', #11/1/2026#, null, 100)",
      "insert into revenues(recordnumber, date, amount, [property code], [revenue group], "
      "tenant_code) values (90004, #11/21/2026#, 5, 'PR00008', 'RENT', 'T00009')",
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due) "
      "values (null, #11/1/2026#, #11/8/2026#, 100)",
      // Periods: credit, before their start, the latest day twice.
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due, extra_charges) "
      "values ('T00010', #11/21/2026#, #11/20/2026#, -80, 3)",
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due, extra_charges) "
      "values ('T00011', #12/21/2030#, #12/28/2030#, 80, 3)",
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due, extra_charges) "
      "values ('T00011', #12/21/2030#, #12/29/2030#, 81, 3)",
      "update tenancy set [when ended] = #11/5/2026# where reference = 'T00012'",
      "update tenancy set [when ended] = #1/1/1990# where reference = 'T00014'",
      // The rest.
      "insert into insp_schedule(tenant_code, inspection_date) values ('t00001', #11/21/2026#)",
      "insert into insp_schedule(tenant_code, inspection_date) values ('T00001', null)",
      "insert into insp_schedule(tenant_code, inspection_date) values ('T00001', #1/1/2027#)",
      "insert into rentchanges(tenantcode, changedate, changevalue) "
      "values ('T00001', #11/21/2026#, null)",
      "insert into rentchanges(tenantcode, changedate, changevalue) "
      "values ('T00001', #11/21/2026#, 9)",
      "insert into custom_fields(parentcode, parenttype, fieldcode, value) "
      "values ('t00001', 201, 'ODD', 'first')",
      "insert into custom_fields(parentcode, parenttype, fieldcode, value) "
      "values ('PR00001', 202, 'Odd', null)",
      "update property set ownercode = null where code = 'PR00004'",
  });
  ExpectNoDifference();
}

TEST_F(AllDetails, FollowTheOptionsOfTheTables) {
  for (const char* change : {"update options set WhatPaysFirst = 1",
                             "update glcodes set pay_extra_charges = -1 where gl_code = 'RENT'",
                             "update glcodes set pay_extra_charges = 0 where gl_code = 'WATER'",
                             "update options set rent_group = null"}) {
    Run({change});
    Session later{machine.Parts()};
    later.database.OpenDatabase();
    later.caches.Load(later.database);
    EXPECT_THAT(Differences(later, kFields), IsEmpty()) << change;
  }
}

TEST_F(AllDetails, AreExtendedToTheAsAtDate) {
  session.as_at_date = Day(2027, 2, 14);
  ExpectNoDifference();
}

TEST_F(AllDetails, ConcernOneTenancyWhereARowIsBad) {
  Run(
      {"insert into rent_periods(tenant_code, period_from, period_to, rent_due) "
       "values ('T00007', null, #11/26/2026#, 100)"});
  session.caches.Load(session.database);
  const AllTenancies all(session, {.account = true});
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool bad = all[i].Record().Reference == "T00007";
    EXPECT_EQ(AccountText(all[i]).starts_with("error 94"), bad) << all[i].Record().Reference;
  }
}

TEST_F(AllDetails, AreReadOnAThreadBesideTheSession) {
  session.caches.Load(session.database);
  DetachedSession beside(session);
  std::vector<std::string> texts;
  std::thread([&] {
    const OpenedDatabase opened(beside.session().database);
    beside.session().caches.Load(beside.session().database);
    const AllTenancies all(beside.session(), {.account = true});
    for (std::size_t i = 0; i < all.size(); ++i) texts.push_back(AccountText(all[i]));
  }).join();
  ASSERT_EQ(texts.size(), session.caches.Tenants.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(texts[i], AccountText(LookedUpTenancy(session, session.caches.Tenants[i], 0)));
  }
  EXPECT_THAT(beside.TakeMessages(), IsEmpty());
}

TEST_F(AllDetails, AreKeptBesideTheSessionUntilTheFileChanges) {
  const std::shared_ptr<DetachedSession> beside = session.Beside();
  const auto settle = [&](std::chrono::seconds ago) {
    std::filesystem::last_write_time(beside->file(),
                                     std::filesystem::file_time_type::clock::now() - ago);
  };
  const auto rent_group = [&] {
    const OpenedDatabase opened(beside->session().database);
    return beside->session().options.RentGroup();
  };
  settle(std::chrono::seconds(20));
  EXPECT_FALSE(beside->IsFresh());
  EXPECT_EQ(beside->Refresh(), "");
  EXPECT_TRUE(beside->IsFresh());
  EXPECT_EQ(rent_group(), "RENT");
  EXPECT_EQ(session.Beside(), beside);

  // Another window's tenancy and its options, which a session keeps, are those of the file again.
  Run({"update options set rent_group = 'WATER'",
       "update tenancy set name = 'Zoe Zed' where reference = 'T00001'"});
  settle(std::chrono::seconds(10));
  EXPECT_FALSE(beside->IsFresh());
  EXPECT_EQ(beside->Refresh(), "");
  EXPECT_EQ(rent_group(), "WATER");
  EXPECT_EQ(beside->session().caches.FindTenant("T00001")->KeyName, "Zoe Zed");

  std::filesystem::resize_file(beside->file(), 4096);
  EXPECT_THAT(beside->Refresh(), testing::Not(IsEmpty()));
  EXPECT_FALSE(beside->IsFresh());
  session.database.CloseDatabase();
}

TEST_F(AllDetails, SayWhatCannotBeReadInsteadOfShowingIt) {
  DetachedSession beside(session);
  const OpenedDatabase opened(beside.session().database);
  beside.session().caches.Load(beside.session().database);
  std::filesystem::resize_file(beside.file(), 4096);
  EXPECT_THROW(AllTenancies(beside.session(), {.account = true}), RuntimeError);
  EXPECT_THAT(beside.TakeMessages(), testing::Not(IsEmpty()));
  session.database.CloseDatabase();
}

TEST_F(AllDetails, EndSoonWhenAStopIsAskedFor) {
  session.caches.Load(session.database);
  std::stop_source stop;
  std::size_t used = 0;
  const std::vector<std::string> codes{"T00001", "T00002", "T00003"};
  ForEachRentAccount(session, codes, stop.get_token(), [&](std::size_t, const ReadOneAccount&) {
    ++used;
    stop.request_stop();
  });
  EXPECT_EQ(used, 1U);
}

}  // namespace
}  // namespace tenora::test
