#include "rental/rent_account.h"

#include "rental/rental_fixture.h"
#include "support/errors.h"

namespace tenora::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

struct StoredPeriod {
  Date from, to;
  std::int64_t rent, extra = 0;
};

// One tenancy, T1, whose rows each test sets.
class RentAccounts : public ScriptedRental {
 protected:
  RentAccounts() {
    StorePeriods({{Day(2026, 11, 2), Day(2026, 11, 8), 10000},
                  {Day(2026, 11, 9), Day(2026, 11, 15), 10000},
                  {Day(2026, 11, 16), Day(2026, 11, 22), 10000}});
    End(Day(kNoDateYear, 1, 1));
    Options(0, {"WATER"});
    Pay(0, Null());
  }

  void StorePeriods(const std::vector<StoredPeriod>& periods) {
    FakeResult rows{{"tenant_code", "period_from", "period_to", "rent_due", "extra_charges"}, {}};
    for (const StoredPeriod& period : periods) {
      rows.rows.push_back({"T1", period.from, period.to, Cents(period.rent), Cents(period.extra)});
    }
    script.results["select * from rent_periods where tenant_code = 'T1' order by period_from"] =
        rows;
  }
  void End(Value when_ended) {
    AnswerLookup("select [when ended] as result from tenancy  where reference = 'T1'",
                 std::move(when_ended));
  }
  void Options(int what_pays_first, const std::vector<std::string>& extra_codes) {
    AnswerLookup("select WhatPaysFirst as result from Options ", std::int64_t{what_pays_first});
    AnswerLookup("select rent_group as result from Options ", "RENT");
    FakeResult codes{{"gl_code"}, {}};
    extra_list_ = "('xydhgus'";
    for (const std::string& code : extra_codes) {
      codes.rows.push_back({code});
      extra_list_ += ",'" + code + "'";
    }
    extra_list_ += ")";
    script.results["select gl_code from glcodes where type = 1 and pay_extra_charges <> 0"] = codes;
  }
  void Pay(std::int64_t rent, const Value& extra) {
    const std::string sum = "select sum(amount)+0 as paid from revenues where [revenue group] ";
    script.results[sum + "= 'RENT' and tenant_code = 'T1'"] = {{"paid"}, {{Cents(rent)}}};
    script.results[sum + "in " + extra_list_ +
                   "  and [revenue group]  <> 'RENT' and tenant_code = 'T1'"] = {{"paid"},
                                                                                 {{extra}}};
  }
  void Terms(Value rent, Value monthly_day, Value every_amt, Value every_freq) {
    script.results[kTermsQuery] = {
        {"current rent", "monthly_day", "every_amt", "every_freq"},
        {{std::move(rent), std::move(monthly_day), std::move(every_amt), std::move(every_freq)}}};
  }
  RentAccount Account() { return RentAccount(session, "T1"); }

  static constexpr const char* kTermsQuery =
      "SELECT monthly_day, reference, [when started], [when ended], closed_yn, every_amt, "
      "every_freq, [Current rent] FROM Tenancy where reference = 'T1'";
  std::string extra_list_;
};

TEST_F(RentAccounts, AnswerFromTheStoredPeriodsAndPayments) {
  const struct {
    const char* what;
    std::int64_t paid;
    double deduct;
    std::int64_t balance;
    Date paid_to;
  } cases[] = {
      {"nothing paid", 0, 0, 30000, Day(2026, 11, 2)},
      {"one week paid", 10000, 0, 20000, Day(2026, 11, 9)},
      {"all paid", 30000, 0, 0, Day(2026, 11, 22)},
      {"a week too much", 40000, 0, -10000, Day(2026, 11, 30)},
      {"before the latest payment", 30000, 100, 0, Day(2026, 11, 16)},
  };
  for (const auto& c : cases) {
    Pay(c.paid, Null());
    EXPECT_EQ(Account().BalanceOwing(), Cents(c.balance)) << c.what;
    EXPECT_EQ(Account().PaidToDate(c.deduct), c.paid_to) << c.what;
  }
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(RentAccounts, CountExtraChargesByTheirAccounts) {
  StorePeriods({{Day(2026, 11, 2), Day(2026, 11, 8), 10000, 5000},
                {Day(2026, 11, 9), Day(2026, 11, 15), 10000}});
  Pay(11000, Cents(2000));
  EXPECT_EQ(Account().BalanceOwing(), Cents(25000 - 13000));
  EXPECT_EQ(Account().Schedule(0)[0].ExtraChargesPaid, Cents(2000));
}

TEST_F(RentAccounts, PayPeriodByPeriodOnlyWhereRentPaysExtraCharges) {
  StorePeriods({{Day(2026, 11, 2), Day(2026, 11, 8), 10000, 5000},
                {Day(2026, 11, 9), Day(2026, 11, 15), 10000}});
  Options(1, {"WATER", "RENT"});
  Pay(16000, Cents(9900));
  const std::vector<RentPeriod> schedule = Account().Schedule(0);
  EXPECT_EQ(schedule[0].ExtraChargesPaid, Cents(5000));
  EXPECT_EQ(schedule[1].Paid, Cents(1000));
}

TEST_F(RentAccounts, TakeNoFuturePeriodButTheFirst) {
  StorePeriods(
      {{Day(2026, 12, 1), Day(2026, 12, 7), 10000}, {Day(2026, 12, 8), Day(2026, 12, 14), 10000}});
  EXPECT_THAT(Account().Schedule(0), SizeIs(1));
}

TEST_F(RentAccounts, KeepANegativePeriodAsAWholePositiveOne) {
  StorePeriods({{Day(2026, 11, 2), Day(2026, 11, 15), -10000}});
  End(Day(2026, 11, 8));
  const std::vector<RentPeriod> schedule = Account().Schedule(0);
  EXPECT_TRUE(schedule[0].Credit);
  EXPECT_EQ(schedule[0].RentDue, Cents(10000));
}

TEST_F(RentAccounts, CountAMissingAmountAsNothing) {
  FakeResult& stored =
      script.results["select * from rent_periods where tenant_code = 'T1' order by period_from"];
  stored.rows[1][4] = Null();
  stored.rows[2][3] = Null();
  EXPECT_EQ(Account().BalanceOwing(), Cents(20000));
  stored.rows[2][1] = Null();
  EXPECT_THROW(Account(), RuntimeError);
}

TEST_F(RentAccounts, EndWithTheTenancy) {
  const struct {
    const char* what;
    Value ended;
    std::int64_t balance;
  } cases[] = {
      {"in the second week", Day(2026, 11, 11), 10000 + 4286},
      {"before the first", Day(2026, 11, 1), 0},
      {"never", Day(kNoDateYear, 1, 1), 30000},
      {"no row or no date", Null(), 30000},
  };
  for (const auto& c : cases) {
    End(c.ended);
    EXPECT_EQ(Account().BalanceOwing(), Cents(c.balance)) << c.what;
  }
}

TEST_F(RentAccounts, OfATenancyWithoutPeriodsIsEmpty) {
  StorePeriods({});
  Pay(10000, Cents(500));
  for (const Date as_at : {Date(), Day(2026, 12, 31)}) {
    session.as_at_date = as_at;
    EXPECT_EQ(Account().BalanceOwing(), Currency());
    EXPECT_EQ(Account().PaidToDate(0), Date());
  }
}

TEST_F(RentAccounts, GoOnToTheAsAtDate) {
  Terms(Cents(14000), std::int64_t{1}, std::int64_t{1}, "Week");
  End(Day(2026, 11, 11));
  session.as_at_date = Day(2026, 12, 2);
  const std::vector<RentPeriod> schedule = Account().Schedule(0);
  // The as-at date takes the place of the tenancy's end, and the last week is charged for 3 days.
  ASSERT_THAT(schedule, SizeIs(5));
  EXPECT_EQ(schedule[3].RentDue, Cents(14000));
  EXPECT_EQ(schedule[4].PeriodFrom, Day(2026, 11, 30));
  EXPECT_EQ(schedule[4].PeriodTo, Day(2026, 12, 2));
  EXPECT_EQ(schedule[4].RentDue, Cents(6000));

  session.as_at_date = Day(2026, 11, 10);
  EXPECT_EQ(Account().BalanceOwing(), Cents(10000 + 2857));
}

TEST_F(RentAccounts, RefuseTermsThatAreNoNumbers) {
  session.as_at_date = Day(2026, 12, 2);
  const struct {
    Value monthly_day, every_amt;
    int number;
  } cases[] = {
      {std::int64_t{40000}, std::int64_t{1}, error_number::kOverflow},
      {std::int64_t{1}, std::int64_t{-40000}, error_number::kOverflow},
      {Null(), std::int64_t{1}, error_number::kInvalidUseOfNull},
  };
  for (const auto& c : cases) {
    Terms(Cents(100), c.monthly_day, c.every_amt, "Week");
    EXPECT_EQ(NumberOf([&] { Account(); }), c.number);
  }
  script.results[kTermsQuery].rows.clear();
  EXPECT_THAT(Account().Schedule(0), SizeIs(3));
}

TEST_F(RentAccounts, ReadEveryTableOnceForAllAnswers) {
  const RentAccount account = Account();
  const std::size_t statements = script.asked.size();
  account.BalanceOwing();
  account.PaidToDate(0);
  account.PaidToDate(100);
  EXPECT_EQ(script.asked.size(), statements);
}

}  // namespace
}  // namespace tenora::test
