#include "rental/rent_account.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "data/sql_text.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "rental/missing_date.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

constexpr int kYearsWithoutEnd = 10;

bool IsSet(Date as_at_date) { return as_at_date.Year() != kEmptyYear; }

RentPeriod StoredPeriod(const query::Recordset& row, Date from) {
  const Currency rent = AmountOf(row, "rent_due");
  return RentPeriod{.PeriodFrom = from,
                    .PeriodTo = FieldAs(ToDate, row, "period_to"),
                    .RentDue = rent.RoundedToCents().Absolute(),
                    .ExtraCharges = AmountOf(row, "extra_charges"),
                    .Credit = rent < Currency()};
}

// Adds a row to the periods before it. Future periods are not due yet, except that a tenancy's
// first one always counts.
void AddStoredPeriod(std::vector<RentPeriod>& schedule, const query::Recordset& row, Date now) {
  const Date from = FieldAs(ToDate, row, "period_from");
  if (from > now && !schedule.empty()) return;
  schedule.push_back(StoredPeriod(row, from));
}

std::vector<RentPeriod> StoredPeriods(Session& session, const std::string& code) {
  std::vector<RentPeriod> schedule;
  const Date now = session.platform.clock.Now();
  Database& database = session.database;
  RecordsetPtr rows;
  database.CreateSet(
      rows,
      "select * from rent_periods where tenant_code = " + SQLText(code) + " order by period_from",
      query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) AddStoredPeriod(schedule, *rows, now);
  return schedule;
}

// Continues after the last stored period; a tenancy without any has no day to continue from.
void ExtendToAsAtDate(Session& session, const std::string& code,
                      std::vector<RentPeriod>& schedule) {
  if (schedule.empty()) return;
  Database& database = session.database;
  RecordsetPtr row;
  database.CreateSet(row,
                     "SELECT monthly_day, reference, [when started], [when ended], closed_yn, "
                     "every_amt, every_freq, [Current rent] FROM Tenancy where reference = " +
                         SQLText(code),
                     query::kForwardOnly, query::kReadOnly);
  if (database.DataIsEmpty(row)) return;
  const RentTerms terms{.tenant_code = code,
                        .rent = FieldAs(ToCurrency, *row, "current rent"),
                        .monthly_day = FieldAs(ToInt16, *row, "monthly_day"),
                        .every_amt = FieldAs(ToInt16, *row, "every_amt"),
                        .every_freq = TextOf(row->Field("every_freq"))};
  PeriodCursor cursor{.start = schedule.back().PeriodTo.AddDays(1)};
  GeneratePeriods(database, terms, session.as_at_date, cursor,
                  [&](const RentPeriod& period) { schedule.push_back(period); });
}

Date WithoutEnd(Session& session) {
  return session.platform.clock.Now().AddYears(kYearsWithoutEnd);
}

Date CutOffOfEnd(Date ended, Date without_end) {
  return ended.Year() == kNoDateYear ? without_end : ended;
}

// The day after which nothing is owed.
Date CutOffDate(Session& session, const std::string& code) {
  if (IsSet(session.as_at_date)) return session.as_at_date;
  const Date without_end = WithoutEnd(session);
  const Date ended = session.database.LookupDate(
      "[when ended]", "tenancy", " where reference = " + SQLText(code), without_end);
  return CutOffOfEnd(ended, without_end);
}

// Decimals of a shown amount, as far as currency has them.
int AmountDecimals(const Locale& locale) {
  const std::string format = NumberFormat(locale);
  const std::size_t point = format.find('.');
  if (point == std::string::npos) return 0;
  return static_cast<int>(std::min<std::size_t>(format.size() - point - 1, 4));
}

Currency PaidSum(Database& database, const std::string& sql) {
  RecordsetPtr row;
  database.CreateSet(row, sql, query::kForwardOnly, query::kReadOnly);
  return database.DataIsEmpty(row) ? Currency() : AmountOf(*row, "paid");
}

// Which revenues pay rent, and which of the others pay extra charges; and by which rules.
struct PaymentRules {
  explicit PaymentRules(Session& session) {
    const std::string rent_group = SQLText(session.options.RentGroup());
    const std::string& extra_codes = session.options.ExtraChargeCodes();
    rent = "[revenue group] = " + rent_group;
    extra = "[revenue group] in " + extra_codes + "  and [revenue group]  <> " + rent_group;
    unpaid.rent_group_pays_extra_charges = extra_codes.find(rent_group) != std::string::npos;
    unpaid.period_by_period = session.options.WhatPaysFirst() == 1;
  }

  std::string rent, extra;  // conditions on a row of revenues
  Payments unpaid;          // without any sum
};

constexpr std::string_view kPaidSum = "select sum(amount)+0 as paid from revenues where ";

Payments ReadPayments(Session& session, const PaymentRules& rules, const std::string& code) {
  const auto paid = [&](const std::string& which) {
    return PaidSum(session.database,
                   std::string(kPaidSum) + which + " and tenant_code = " + SQLText(code));
  };
  Payments payments = rules.unpaid;
  payments.rent = paid(rules.rent);
  if (!payments.rent_group_pays_extra_charges) payments.extra_charges = paid(rules.extra);
  return payments;
}

// What all accounts are made of, by the places of their codes.
class AllAccounts {
 public:
  AllAccounts(Session& session, std::span<const std::string> codes, const std::stop_token& stop)
      : session_(session),
        codes_(codes),
        pass_(session.database, codes, stop),
        rules_(session),
        now_(session.platform.clock.Now()),
        decimals_(AmountDecimals(session.platform.locale)),
        read_(codes.size()) {}

  void Run(const UseAccount& use) {
    ReadEnds();
    ReadSums();
    ReadPeriods(use);
    for (std::size_t i = 0; i < codes_.size() && !pass_.Stopped(); ++i) {
      if (!read_[i].used) Use(i, use);
    }
  }

 private:
  struct Reading {
    bool tenancy = false;  // of this code is there; the first one's end is
    Value ended = {};
    Currency rent = {}, extra = {};
    bool summed = true;  // false: by the engine
    std::vector<RentPeriod> periods = {};
    Value latest_from = {}, latest_to = {};
    std::exception_ptr error = {};  // of a payment or a period
    bool used = false;
  };

  void ReadEnds() {
    if (IsSet(session_.as_at_date)) return;
    pass_.Each("select reference, [when ended] from tenancy",
               [&](std::size_t i, const query::Recordset& row) {
                 if (!std::exchange(read_[i].tenancy, true)) read_[i].ended = row.Field(1);
               });
  }

  // Added up here: to group all payments by their texts takes the engine three times as long. Of
  // amounts that are no money in the table, the engine's sum counts.
  void ReadSums() {
    const auto add = [&](const std::string& which, Currency Reading::*sum) {
      pass_.Each("select tenant_code, amount from revenues where " + which,
                 [&](std::size_t i, const query::Recordset& row) {
                   Reading& reading = read_[i];
                   const Value amount = row.Field(1);
                   const auto* const money = std::get_if<Currency>(&amount);
                   if (money != nullptr) {
                     Add(*money, reading.*sum, reading);
                   } else if (!IsNull(amount)) {
                     reading.summed = false;
                   }
                 });
    };
    add(rules_.rent, &Reading::rent);
    if (!rules_.unpaid.rent_group_pays_extra_charges) add(rules_.extra, &Reading::extra);
  }

  static void Add(Currency amount, Currency& sum, Reading& reading) {
    try {
      sum += amount;
    } catch (...) {
      reading.error = std::current_exception();
    }
  }

  // A tenancy's periods come together: its account is made when the next one's begin.
  void ReadPeriods(const UseAccount& use) {
    std::optional<std::size_t> last;
    pass_.Each(
        "select tenant_code, period_from, period_to, rent_due, extra_charges from rent_periods "
        "order by tenant_code, period_from",
        [&](std::size_t i, const query::Recordset& row) {
          if (last && *last != i) Use(*last, use);
          last = i;
          AddPeriod(read_[i], row);
        });
    if (last && !pass_.Stopped()) Use(*last, use);
  }

  // The latest period is the first of those with the latest day, as a statement in the opposite
  // order has it.
  void AddPeriod(Reading& reading, const query::Recordset& row) const {
    Value from = row.Field(1);
    if (from != reading.latest_from) {
      reading.latest_from = std::move(from);
      reading.latest_to = row.Field(2);
    }
    if (reading.error) return;
    try {
      AddStoredPeriod(reading.periods, row, now_);
    } catch (...) {
      reading.error = std::current_exception();
    }
  }

  void Use(std::size_t i, const UseAccount& use) {
    Reading& reading = read_[i];
    reading.used = true;
    use(i, [&] { return Make(codes_[i], reading); });
    std::vector<RentPeriod>().swap(reading.periods);
  }

  ReadAccount Make(const std::string& code, const Reading& reading) const {
    if (reading.error) std::rethrow_exception(reading.error);
    std::vector<RentPeriod> periods = reading.periods;
    if (IsSet(session_.as_at_date)) ExtendToAsAtDate(session_, code, periods);
    TrimPeriods(periods, CutOff(reading), decimals_);
    Payments payments = rules_.unpaid;
    payments.rent = reading.rent;
    payments.extra_charges = reading.extra;
    if (!reading.summed) payments = ReadPayments(session_, rules_, code);
    return {RentAccount(std::move(periods), payments, now_.DateOnly()),
            ToDate(NullTo(reading.latest_from, Date())), ToDate(NullTo(reading.latest_to, Date()))};
  }

  Date CutOff(const Reading& reading) const {
    if (IsSet(session_.as_at_date)) return session_.as_at_date;
    const Date without_end = WithoutEnd(session_);
    return CutOffOfEnd(ToDate(NullTo(reading.ended, without_end)), without_end);
  }

  Session& session_;
  const std::span<const std::string> codes_;
  TablePass pass_;
  const PaymentRules rules_;
  const Date now_;
  const int decimals_;
  std::vector<Reading> read_;
};

}  // namespace

RentAccount::RentAccount(Session& session, std::string_view tenant_code)
    : today_(session.platform.clock.Today()) {
  const std::string code(tenant_code);
  periods_ = StoredPeriods(session, code);
  if (IsSet(session.as_at_date)) ExtendToAsAtDate(session, code, periods_);
  TrimPeriods(periods_, CutOffDate(session, code), AmountDecimals(session.platform.locale));
  payments_ = ReadPayments(session, PaymentRules(session), code);
}

std::vector<RentPeriod> RentAccount::Schedule(double deduct) const {
  std::vector<RentPeriod> schedule = periods_;
  Payments payments = payments_;
  payments.rent -= Currency::FromDouble(deduct);
  SpreadPayments(payments, schedule);
  return schedule;
}

Currency RentAccount::BalanceOwing() const { return SumOfOutstanding(Schedule(0)); }

Date RentAccount::PaidToDate(double deduct) const {
  return tenora::PaidToDate(Schedule(deduct), today_);
}

void ForEachRentAccount(Session& session, std::span<const std::string> codes,
                        const std::stop_token& stop, const UseAccount& use) {
  AllAccounts(session, codes, stop).Run(use);
}

}  // namespace tenora
