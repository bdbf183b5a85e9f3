#include "rental/rent_account.h"

#include <algorithm>
#include <optional>

#include "data/sql_text.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "rental/lookup_rows.h"
#include "rental/missing_date.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

constexpr int kYearsWithoutEnd = 10;

bool IsSet(Date as_at_date) { return as_at_date.Year() != kEmptyYear; }

RentPeriod PeriodOf(Date from, Date to, Currency rent, Currency extra_charges) {
  return RentPeriod{.PeriodFrom = from,
                    .PeriodTo = to,
                    .RentDue = rent.RoundedToCents().Absolute(),
                    .ExtraCharges = extra_charges,
                    .Credit = rent < Currency()};
}

// Adds a row to the periods before it. Future periods are not due yet, except that a tenancy's
// first one always counts.
void AddStoredPeriod(std::vector<RentPeriod>& schedule, const query::Recordset& row, Date now) {
  const Date from = FieldAs(ToDate, row, "period_from");
  if (from > now && !schedule.empty()) return;
  const Currency rent = AmountOf(row, "rent_due");
  const Date to = FieldAs(ToDate, row, "period_to");
  schedule.push_back(PeriodOf(from, to, rent, AmountOf(row, "extra_charges")));
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
    ReadPeriods();
    for (std::size_t i = 0; i < codes_.size() && !pass_.Stopped(); ++i) {
      use(i, [&] { return read_[i].odd ? ByItself(codes_[i]) : Make(codes_[i], read_[i]); });
      std::vector<RentPeriod>().swap(read_[i].periods);
    }
  }

 private:
  struct Reading {
    bool tenancy = false;  // of this code is there; the first one's end is
    Value ended = {};
    Currency rent = {}, extra = {};
    std::vector<RentPeriod> periods = {};  // future ones too
    // There is a row whose values are missing or of other types: what the engine makes of them,
    // and which error they give, the statements of this account alone say.
    bool odd = false;
  };

  void ReadEnds() {
    if (IsSet(session_.as_at_date)) return;
    pass_.Each("select reference, [when ended] from tenancy",
               [&](std::size_t i, const query::Recordset& row) {
                 if (!std::exchange(read_[i].tenancy, true)) read_[i].ended = row.Field(1);
               });
  }

  // Added up here: to group all payments by their texts takes the engine three times as long.
  void ReadSums() {
    const auto add = [&](const std::string& which, Currency Reading::*sum) {
      pass_.Each("select tenant_code, amount from revenues where " + which,
                 [&](std::size_t i, const query::Recordset& row) {
                   Add(row.Field(1), read_[i].*sum, read_[i]);
                 });
    };
    add(rules_.rent, &Reading::rent);
    if (!rules_.unpaid.rent_group_pays_extra_charges) add(rules_.extra, &Reading::extra);
  }

  static void Add(const Value& amount, Currency& sum, Reading& reading) {
    if (IsNull(amount)) return;
    try {
      sum += std::get<Currency>(amount);
    } catch (...) {
      reading.odd = true;
    }
  }

  // In no order: for the engine to sort them takes as long as to read them.
  void ReadPeriods() {
    pass_.Each(
        "select tenant_code, period_from, period_to, rent_due, extra_charges from rent_periods",
        [&](std::size_t i, const query::Recordset& row) {
          Reading& reading = read_[i];
          const Value from = row.Field(1), to = row.Field(2);
          const Value rent = row.Field(3), extra = row.Field(4);
          reading.odd =
              reading.odd || !IsDate(from) || !IsDate(to) || !IsAmount(rent) || !IsAmount(extra);
          if (reading.odd) return;
          reading.periods.push_back(PeriodOf(std::get<Date>(from), std::get<Date>(to),
                                             AmountIn(rent, "rent_due"),
                                             AmountIn(extra, "extra_charges")));
        });
    for (Reading& reading : read_) {
      const auto from = &RentPeriod::PeriodFrom;
      if (std::ranges::is_sorted(reading.periods, {}, from)) continue;
      std::ranges::stable_sort(reading.periods, {}, from);
    }
  }

  static bool IsDate(const Value& value) { return std::holds_alternative<Date>(value); }
  static bool IsAmount(const Value& value) {
    return IsNull(value) || std::holds_alternative<Currency>(value);
  }

  ReadAccount Make(const std::string& code, const Reading& reading) const {
    const std::vector<RentPeriod>& all = reading.periods;
    const auto from = &RentPeriod::PeriodFrom;
    std::vector<RentPeriod> periods(all.begin(), std::ranges::upper_bound(all, now_, {}, from));
    // The first one counts in any case, as in AddStoredPeriod.
    if (periods.empty() && !all.empty()) periods.push_back(all.front());
    if (IsSet(session_.as_at_date)) ExtendToAsAtDate(session_, code, periods);
    TrimPeriods(periods, CutOff(reading), decimals_);
    Payments payments = rules_.unpaid;
    payments.rent = reading.rent;
    payments.extra_charges = reading.extra;
    // The first of those with the latest day, as a statement in the opposite order has it.
    const RentPeriod latest = all.empty()
                                  ? RentPeriod()
                                  : *std::ranges::lower_bound(all, all.back().PeriodFrom, {}, from);
    return {RentAccount(std::move(periods), payments, now_.DateOnly()), latest.PeriodFrom,
            latest.PeriodTo};
  }

  ReadAccount ByItself(const std::string& code) const {
    RentAccount account(session_, code);
    const LatestPeriod latest = FindLatestPeriod(session_, code);
    return {std::move(account), latest.from, latest.to};
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
