#include "rental/rent_account.h"

#include <algorithm>
#include <string>

#include "data/sql_text.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "rental/missing_date.h"

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

// Future periods are not due yet, except that a tenancy's first one always counts.
std::vector<RentPeriod> StoredPeriods(Session& session, const std::string& code) {
  std::vector<RentPeriod> schedule;
  const Date now = session.platform.clock.Now();
  Database& database = session.database;
  RecordsetPtr rows;
  database.CreateSet(
      rows,
      "select * from rent_periods where tenant_code = " + SQLText(code) + " order by period_from",
      query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    const Date from = FieldAs(ToDate, *rows, "period_from");
    if (from > now && !schedule.empty()) continue;
    schedule.push_back(StoredPeriod(*rows, from));
  }
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

// The day after which nothing is owed.
Date CutOffDate(Session& session, const std::string& code) {
  if (IsSet(session.as_at_date)) return session.as_at_date;
  const Date without_end = session.platform.clock.Now().AddYears(kYearsWithoutEnd);
  const Date ended = session.database.LookupDate(
      "[when ended]", "tenancy", " where reference = " + SQLText(code), without_end);
  return ended.Year() == kNoDateYear ? without_end : ended;
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

Payments ReadPayments(Session& session, const std::string& code) {
  const std::string& rent_group = session.options.RentGroup();
  const std::string& extra_codes = session.options.ExtraChargeCodes();
  Payments payments;
  payments.rent = PaidSum(session.database,
                          "select sum(amount)+0 as paid from revenues where [revenue group] = " +
                              SQLText(rent_group) + " and tenant_code = " + SQLText(code));
  payments.rent_group_pays_extra_charges =
      extra_codes.find(SQLText(rent_group)) != std::string::npos;
  payments.period_by_period = session.options.WhatPaysFirst() == 1;
  if (!payments.rent_group_pays_extra_charges) {
    payments.extra_charges = PaidSum(
        session.database, "select sum(amount)+0 as paid from revenues where [revenue group] in " +
                              extra_codes + "  and [revenue group]  <> " + SQLText(rent_group) +
                              " and tenant_code = " + SQLText(code));
  }
  return payments;
}

}  // namespace

RentAccount::RentAccount(Session& session, std::string_view tenant_code)
    : today_(session.platform.clock.Today()) {
  const std::string code(tenant_code);
  periods_ = StoredPeriods(session, code);
  if (IsSet(session.as_at_date)) ExtendToAsAtDate(session, code, periods_);
  TrimPeriods(periods_, CutOffDate(session, code), AmountDecimals(session.platform.locale));
  payments_ = ReadPayments(session, code);
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

}  // namespace tenora
