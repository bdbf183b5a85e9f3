// The load of the tenant cache, which goes on after every error.
#include <string>

#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"
#include "rental/caches.h"
#include "rental/row_field.h"

namespace tenora {
namespace {

// The doubled columns and the unread last_inspection are part of the text.
constexpr std::string_view kTenantQuery =
    "select reference, id_number, monthly_day, [Property Code], water_meter, "
    "tenancy.address1 as a1, tenancy.address2 as a2, tenancy.address3 as a3, reference, "
    "[property code], [when ended], last_inspection, "
    "lastrentrise,email,home_phone,work_phone,mobile,fax,[when started], bond, closed_yn, "
    "[current rent], every_amt, every_freq, property.address1, property.address2, "
    "property.address3, name, rentreviewdate from tenancy inner join property on "
    "tenancy.[property code] = property.code order by name, closed_yn desc";

// A record whose loaded fields are at their defaults, so that a field that fails to load does not
// show another tenancy's value. The payment fields stay what the last LastPayment left in the
// element of this index, whichever tenancy that was: this is deliberate, and the merge fills them
// again before it reads them.
TenantRecord WithPaymentOf(const TenantRecord& earlier) {
  TenantRecord tenant;
  tenant.LastPaymentDate = earlier.LastPaymentDate;
  tenant.LastPaymentAmount = earlier.LastPaymentAmount;
  tenant.BalanceOwing = earlier.BalanceOwing;
  tenant.LastPaymentTax = earlier.LastPaymentTax;
  tenant.LastPaymentExclusive = earlier.LastPaymentExclusive;
  tenant.PaidToDate = earlier.PaidToDate;
  tenant.LastPaymentNumber = earlier.LastPaymentNumber;
  tenant.LastPeriodFrom = earlier.LastPeriodFrom;
  tenant.LastPeriodTo = earlier.LastPeriodTo;
  tenant.LastPaymentTender = earlier.LastPaymentTender;
  tenant.PreviousPaidToDate = earlier.PreviousPaidToDate;
  return tenant;
}

std::string FrequencyText(const Value& every_amt, const std::string& every_freq) {
  return ToDouble(every_amt) == 1 ? every_freq : TextOf(every_amt) + " " + every_freq + "s";
}

// Every statement is a step of its own: one that fails is shown, and the next one is run.
void FillTenant(ResumeNext& shown, const query::Recordset& row, TenantRecord& tenant) {
  const auto step = [&](const auto& statement) {
    shown([&] { About([&] { return "tenancy " + tenant.Reference; }, statement); });
  };
  const auto text = [&](std::string& field, std::string_view column) {
    step([&] { field = TextOf(row.Field(column)); });
  };
  const auto number = [&](double& field, std::string_view column) {
    step([&] { field = FieldAs(ToDouble, row, column); });
  };
  const auto date = [&](Date& field, std::string_view column) {
    step([&] { field = FieldAs(ToDate, row, column); });
  };
  text(tenant.Reference, "reference");
  step([&] { tenant.Closed = FieldAs(ToBool, row, "closed_yn"); });
  step([&] { tenant.KeyName = SafeName(TextOf(row.Field("name"))); });
  tenant.DisplayName = tenant.KeyName;
  if (tenant.Closed) tenant.DisplayName = "(Closed) " + tenant.DisplayName;
  text(tenant.PropertyAddress1, "address1");
  text(tenant.PropertyAddress2, "address2");
  text(tenant.PropertyAddress3, "address3");
  step([&] {
    const std::string every_freq = TextOf(row.Field("every_freq"));
    tenant.FrequencyText =
        FieldAs([&](const Value& every_amt) { return FrequencyText(every_amt, every_freq); }, row,
                "every_amt");
  });
  number(tenant.CurrentRent, "current rent");
  number(tenant.Bond, "bond");
  date(tenant.StartDate, "when started");
  date(tenant.LastRentRise, "lastrentrise");
  text(tenant.Email, "email");
  text(tenant.HomePhone, "home_phone");
  text(tenant.WorkPhone, "work_phone");
  text(tenant.Mobile, "mobile");
  text(tenant.Fax, "fax");
  date(tenant.EndDate, "when ended");
  text(tenant.PropertyCode, "Property Code");
  text(tenant.WaterMeter, "water_meter");
  text(tenant.TenantAddress1, "a1");
  text(tenant.TenantAddress2, "a2");
  text(tenant.TenantAddress3, "a3");
  step([&] { tenant.MonthlyDay = FieldAs(ToInt16, row, "monthly_day"); });
  text(tenant.IdNumber, "id_number");
  date(tenant.RentReviewDate, "RentReviewDate");
}

}  // namespace

void Caches::CacheTenants(Database& database) {
  ResumeNext step(database.platform().dialogs, "CacheTenants");
  std::size_t count = 0;
  RecordsetPtr rows;
  database.CreateSet(rows, kTenantQuery, query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    ++count;
    if (Tenants.size() < count) Tenants.emplace_back();
    TenantRecord& tenant = Tenants[count - 1];
    tenant = WithPaymentOf(tenant);
    FillTenant(step, *rows, tenant);
  }
  Tenants.resize(count);
}

}  // namespace tenora
