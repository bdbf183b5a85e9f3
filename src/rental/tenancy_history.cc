#include "rental/tenancy_history.h"

#include <algorithm>

#include "data/sql_text.h"
#include "platform/locale/locale.h"
#include "platform/runtime/text.h"
#include "rental/rent_account.h"

namespace tenora {
namespace {

template <typename Use>
void ForEachRow(Session& session, const std::string& sql, Use&& use) {
  Database& database = session.database;
  RecordsetPtr rows;
  database.CreateSet(rows, sql, query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) use(*rows);
}

// A column that only some releases of the rental package have.
std::string OptionalText(const query::Recordset& row, std::string_view column) {
  const bool known = std::ranges::any_of(
      row.FieldNames(), [&](const std::string& name) { return EqualsNoCase(name, column); });
  return known ? TextOf(row.Field(column)) : "";
}

Date DateOf(const query::Recordset& row, std::string_view column) {
  return FieldAs([](const Value& value) { return ToDate(NullTo(value, Value(Date()))); }, row,
                 column);
}

std::vector<PaymentRecord> PaymentsWhere(Session& session, const std::string& condition) {
  std::vector<PaymentRecord> payments;
  ForEachRow(session, "select * from revenues where " + condition + " order by date, recordnumber",
             [&](const query::Recordset& row) {
               payments.push_back({.date = DateOf(row, "date"),
                                   .amount = AmountOf(row, "amount"),
                                   .tax = AmountOf(row, "tax"),
                                   .number = FieldAs(ToInt32, row, "recordnumber"),
                                   .tender = TextOf(row.Field("tender")),
                                   .account = TextOf(row.Field("revenue group")),
                                   .comment = OptionalText(row, "comment")});
             });
  return payments;
}

std::string OfTenant(std::string_view tenant_code) {
  return "tenant_code = " + SQLText(tenant_code);
}

// Those that the rent account counts.
std::vector<PaymentRecord> CountedPayments(Session& session, std::string_view tenant_code) {
  const std::string rent = SQLText(session.options.RentGroup());
  const std::string& extra_codes = session.options.ExtraChargeCodes();
  std::string group = "[revenue group] = " + rent;
  // Where the rent group itself pays extra charges, the account leaves the others out.
  if (extra_codes.find(rent) == std::string::npos) {
    group = "(" + group + " or [revenue group] in " + extra_codes + ")";
  }
  return PaymentsWhere(session, group + " and " + OfTenant(tenant_code));
}

std::vector<LedgerEntry> Charges(Session& session, const std::vector<RentPeriod>& schedule) {
  const Locale& locale = session.platform.locale;
  std::vector<LedgerEntry> charges;
  for (const RentPeriod& period : schedule) {
    const std::string days =
        locale.ShortDate(period.PeriodFrom) + " to " + locale.ShortDate(period.PeriodTo);
    charges.push_back({period.PeriodFrom, "Rent " + days, period.RentDue, std::nullopt, {}});
    if (period.ExtraCharges != Currency()) {
      charges.push_back(
          {period.PeriodFrom, "Other charges", period.ExtraCharges, std::nullopt, {}});
    }
  }
  return charges;
}

LedgerEntry EntryOf(Session& session, const PaymentRecord& payment) {
  std::string text = "Payment";
  if (!EqualsNoCase(payment.account, session.options.RentGroup())) text += " " + payment.account;
  if (!payment.tender.empty()) text += ", " + payment.tender;
  return {payment.date, text, std::nullopt, payment.amount, {}};
}

}  // namespace

std::vector<PaymentRecord> PaymentsOf(Session& session, std::string_view tenant_code) {
  return PaymentsWhere(session, OfTenant(tenant_code));
}

std::vector<InspectionRecord> InspectionsOf(Session& session, std::string_view tenant_code) {
  std::vector<InspectionRecord> inspections;
  ForEachRow(
      session,
      "select * from insp_schedule where " + OfTenant(tenant_code) + " order by inspection_date",
      [&](const query::Recordset& row) {
        inspections.push_back({DateOf(row, "inspection_date"), OptionalText(row, "remark")});
      });
  return inspections;
}

std::vector<RentChange> RentChangesOf(Session& session, std::string_view tenant_code) {
  std::vector<RentChange> changes;
  ForEachRow(session,
             "select changedate, changevalue from rentchanges where tenantcode = " +
                 SQLText(tenant_code) + " order by changedate",
             [&](const query::Recordset& row) {
               changes.push_back({DateOf(row, "changedate"), AmountOf(row, "changevalue")});
             });
  return changes;
}

std::vector<LedgerEntry> LedgerOf(Session& session, std::string_view tenant_code) {
  const RentAccount account(session, tenant_code);
  std::vector<LedgerEntry> entries = Charges(session, account.Schedule(0));
  for (const PaymentRecord& payment : CountedPayments(session, tenant_code)) {
    entries.push_back(EntryOf(session, payment));
  }
  std::ranges::stable_sort(entries, {},
                           [](const LedgerEntry& entry) { return entry.date.DayNumber(); });
  Currency balance;
  for (LedgerEntry& entry : entries) {
    balance += entry.charge.value_or(Currency()) - entry.payment.value_or(Currency());
    entry.balance = balance;
  }
  const Currency owing = account.BalanceOwing();
  if (owing != balance) {
    entries.push_back({entries.back().date, "Payments without rent periods, not counted",
                       owing - balance, std::nullopt, owing});
  }
  return entries;
}

}  // namespace tenora
