#include "rental/tenant_lookups.h"

#include "data/sql_text.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "rental/lookup_rows.h"
#include "rental/rent_account.h"

namespace tenora {
namespace {

// A field of the first row, null when there is none.
Value FirstValue(Database& database, const std::string& sql, std::string_view field) {
  RecordsetPtr row;
  database.CreateSet(row, sql, query::kForwardOnly, query::kReadOnly);
  return database.DataIsEmpty(row) ? Value(Null()) : row->Field(field);
}

Value NextRentChange(Session& session, const std::string& field, std::string_view tenant_code) {
  return FirstValue(session.database,
                    "select top 1 " + field + " from rentchanges where tenantcode = " +
                        SQLText(tenant_code) + " and " + RentChangeCondition(session),
                    field);
}

constexpr std::string_view kPaymentQuery =
    "select top 1 recordnumber, tender, rent_weeks, date, amount, paid_to, [property code], tax "
    "from revenues where ";

std::string PaymentQuery(const TenantRecord& tenant, const std::string& rent_group,
                         std::int32_t receipt_number) {
  std::string sql(kPaymentQuery);
  if (receipt_number != 0) return sql + "recordnumber = " + std::to_string(receipt_number);
  sql += PaysTenancy(rent_group) + " and [property code] = " + SQLText(tenant.PropertyCode) +
         " and tenant_code = " + SQLText(tenant.Reference);
  return sql.append(kLatestPaymentFirst);
}

// None where either is missing or they are of different types.
std::partial_ordering CompareValues(const Value& left, const Value& right) {
  if (const auto* date = std::get_if<Date>(&left);
      date != nullptr && right.index() == left.index()) {
    return *date <=> std::get<Date>(right);
  }
  const auto* const number = std::get_if<std::int64_t>(&left);
  if (number == nullptr || right.index() != left.index()) return std::partial_ordering::unordered;
  return *number <=> std::get<std::int64_t>(right);
}

}  // namespace

std::string PaysRent(const std::string& rent_group) {
  return "[revenue group] = " + SQLText(rent_group);
}

std::string PaysTenancy(const std::string& rent_group) {
  return "(" + PaysRent(rent_group) + " or " + std::string(kPaysExtraCharges) + ")";
}

std::partial_ordering CompareLateness(const PaymentRow& left, const PaymentRow& right) {
  std::partial_ordering order = CompareValues(left.date, right.date);
  if (order == 0) order = CompareValues(left.number, right.number);
  return order == 0 ? std::partial_ordering::unordered : order;
}

void ClearPayment(TenantRecord& tenant) {
  tenant.LastPaymentDate = Date();
  tenant.LastPaymentAmount = 0;
  tenant.LastPaymentNumber = 0;
  tenant.LastPaymentTax = 0;
  tenant.LastPaymentExclusive = 0;
  tenant.LastPaymentTender.clear();
}

void ReadPayment(const PaymentRow& row, TenantRecord& tenant) {
  const Currency amount = AmountIn(row.amount, "amount");
  const Currency tax = AmountIn(row.tax, "tax");
  tenant.LastPaymentDate = ValueAs(ToDate, row.date, "date");
  tenant.LastPaymentAmount = amount.ToDouble();
  tenant.LastPaymentNumber = ValueAs(ToInt32, row.number, "recordnumber");
  tenant.LastPaymentTax = tax.ToDouble();
  tenant.LastPaymentExclusive = (amount - tax).ToDouble();
  tenant.LastPaymentTender = TextOf(row.tender);
}

bool FindLastPayment(Session& session, TenantRecord& tenant, const std::string& rent_group,
                     std::int32_t receipt_number) {
  ClearPayment(tenant);
  RecordsetPtr row;
  session.database.CreateSet(row, PaymentQuery(tenant, rent_group, receipt_number),
                             query::kForwardOnly, query::kReadOnly);
  if (session.database.DataIsEmpty(row)) return false;
  ReadPayment({row->Field("date"), row->Field("recordnumber"), row->Field("tender"),
               row->Field("amount"), row->Field("tax")},
              tenant);
  return true;
}

double FindRentPayment(Session& session, const TenantRecord& tenant,
                       const std::string& rent_group) {
  const std::string latest =
      " where " + PaysRent(rent_group) + " and [property code] = " + SQLText(tenant.PropertyCode) +
      " and tenant_code = " + SQLText(tenant.Reference) + std::string(kLatestPaymentFirst);
  return RentPaymentOf(session.database.LookupText("top 1 amount", "revenues", latest, "0"));
}

LatestPeriod FindLatestPeriod(Session& session, const std::string& tenant_code) {
  const std::string latest =
      " where tenant_code = " + SQLText(tenant_code) + " order by period_from desc";
  const auto find = [&](const char* day) {
    return session.database.LookupDate(std::string("top 1 ") + day, "rent_periods", latest, Date());
  };
  const Date from = find("period_from");
  return {from, find("period_to")};
}

double RentPaymentOf(const Value& amount) {
  return LeadingNumber(ToText(NullTo(amount, std::string("0"))));
}

void FillPaidTo(const RentAccount& account, double rent_payment, TenantRecord& tenant) {
  tenant.PaidToDate = account.PaidToDate(0);
  tenant.PreviousPaidToDate = account.PaidToDate(rent_payment);
}

std::string InspectionCondition(Session& session, bool next) {
  return std::string("inspection_date ") + (next ? "> " : "<= ") +
         SQLDateTime(session.platform.clock.Today()) +
         (next ? " order by inspection_date" : " order by inspection_date desc");
}

std::string RentChangeCondition(Session& session) {
  // No blank in front of "order": the statement is sent as it always was.
  return "changedate>=" + SQLDateTime(session.platform.clock.Today()) + "order by changedate asc";
}

RentChange RentChangeOf(const Value& date, const Value& rent) {
  return RentChange{ToDate(date), IsNull(rent) ? Currency() : ToCurrency(rent)};
}

std::optional<RentChange> FindNextRentChange(Session& session, std::string_view tenant_code) {
  const Value date = NextRentChange(session, "changedate", tenant_code);
  const Value rent = NextRentChange(session, "changevalue", tenant_code);
  if (IsNull(date)) return std::nullopt;
  return RentChangeOf(date, rent);
}

std::string NextRentChangeDate(Session& session, std::string_view tenant_code) {
  const Value date = NextRentChange(session, "changedate", tenant_code);
  return IsNull(date) ? "" : session.platform.locale.LongDate(ToDate(date));
}

std::string NextRentChangeValue(Session& session, std::string_view tenant_code) {
  const Value rent = NextRentChange(session, "changevalue", tenant_code);
  return IsNull(rent) ? "" : session.platform.locale.CurrencyText(ToDouble(rent));
}

std::optional<Date> FindInspection(Session& session, bool next, std::string_view tenant_code) {
  const std::string sql = "select top 1 inspection_date from insp_schedule where tenant_code = " +
                          SQLText(tenant_code) + " and " + InspectionCondition(session, next);
  const Value date = FirstValue(session.database, sql, "inspection_date");
  if (IsNull(date)) return std::nullopt;
  return ToDate(date);
}

std::string InspectionDate(Session& session, std::optional<Date> inspection) {
  const Locale& locale = session.platform.locale;
  const Date date = inspection.value_or(session.platform.clock.Now());
  const CalendarTime time = date.Calendar();
  if (time.hour == 0 && time.minute == 0) return locale.LongDate(date);
  return locale.LongDate(date) + " " + locale.MediumTime(date);
}

bool HasPayment(Session& session, const TenantRecord& tenant) {
  Database& database = session.database;
  RecordsetPtr row;
  database.CreateSet(row,
                     PaymentQuery(tenant, database.LookupText("rent_group", "Options", "", ""), 0),
                     query::kForwardOnly, query::kReadOnly);
  return !database.DataIsEmpty(row);
}

bool LastPayment(Session& session, TenantRecord& tenant, std::int32_t receipt_number) {
  Database& database = session.database;
  const std::string rent_group = database.LookupText("rent_group", "Options", "", "");
  const RentAccount account(session, tenant.Reference);
  tenant.BalanceOwing = account.BalanceOwing().ToDouble();

  const LatestPeriod latest = FindLatestPeriod(session, tenant.Reference);
  tenant.LastPeriodFrom = latest.from;
  tenant.LastPeriodTo = latest.to;

  const bool found = FindLastPayment(session, tenant, rent_group, receipt_number);
  FillPaidTo(account, FindRentPayment(session, tenant, rent_group), tenant);
  return found;
}

std::string OwnerNameOfProperty(Session& session, std::string_view property_code) {
  return session.database.LookupText("owner.name", kOwnersOfProperties,
                                     "Where property.code = " + SQLText(property_code), "");
}

std::string OwnerAccountOfProperty(Session& session, std::string_view property_code) {
  return session.database.LookupText("owner.account_number", kOwnersOfProperties,
                                     "Where property.code = " + SQLText(property_code), "");
}

}  // namespace tenora
