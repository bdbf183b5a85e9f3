#include "rental/caches.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "data/sql_text.h"
#include "platform/dialogs/dialogs.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Calls `use` with each row of a query, in its order; the query's own errors are shown and end it.
template <typename Use>
void ForEachRow(Database& database, std::string_view sql, Use&& use) {
  RecordsetPtr rows;
  database.CreateSet(rows, sql, query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) use(*rows);
}

// The doubled columns and the unread last_inspection are part of the text.
constexpr std::string_view kTenantRows =
    "select reference, id_number, monthly_day, [Property Code], water_meter, "
    "tenancy.address1 as a1, tenancy.address2 as a2, tenancy.address3 as a3, reference, "
    "[property code], [when ended], last_inspection, "
    "lastrentrise,email,home_phone,work_phone,mobile,fax,[when started], bond, closed_yn, "
    "[current rent], every_amt, every_freq, property.address1, property.address2, "
    "property.address3, name, rentreviewdate from tenancy inner join property on "
    "tenancy.[property code] = property.code";
constexpr std::string_view kTenantOrder = " order by name, closed_yn desc";

// The errors of a load, shown as one however many rows have them.
class LoadErrors {
 public:
  // Runs one statement, which fills a record from a column; where it fails, the next is run.
  template <typename Statement>
  void Step(std::string_view column, const std::string& row, Statement&& statement) {
    try {
      About([&] { return row; }, std::forward<Statement>(statement));
    } catch (...) {
      if (!first_) first_ = CurrentError();
      ++count_;
      ++columns_[std::string(column)];
    }
  }

  void Show(Dialogs& dialogs) const {
    if (!first_) return;
    std::string text = ErrorText(*first_);
    if (count_ > 1) {
      text += "\r\n\r\nThere are " + std::to_string(count_) +
              " such fields in the tables tenancy and property, by column:";
      for (const auto& [column, count] : columns_) {
        text += "\r\n" + column + ": " + std::to_string(count);
      }
    }
    dialogs.Say(text, "CacheTenants");
  }

 private:
  std::optional<RuntimeError> first_;
  std::size_t count_ = 0;
  std::map<std::string, std::size_t> columns_;
};

std::string FrequencyText(const Value& every_amt, const std::string& every_freq) {
  return ToDouble(every_amt) == 1 ? every_freq : TextOf(every_amt) + " " + every_freq + "s";
}

void FillTenant(LoadErrors& errors, const query::Recordset& row, TenantRecord& tenant) {
  const auto fill = [&](std::string_view column, const auto& statement) {
    errors.Step(column, "tenancy " + tenant.Reference, statement);
  };
  const auto text = [&](std::string& field, std::string_view column) {
    fill(column, [&] { field = TextOf(row.Field(column)); });
  };
  const auto number = [&](double& field, std::string_view column) {
    fill(column, [&] { field = FieldAs(ToDouble, row, column); });
  };
  const auto date = [&](Date& field, std::string_view column) {
    fill(column, [&] { field = FieldAs(ToDate, row, column); });
  };
  text(tenant.Reference, "reference");
  fill("closed_yn", [&] { tenant.Closed = FieldAs(ToBool, row, "closed_yn"); });
  fill("name", [&] { tenant.KeyName = SafeName(TextOf(row.Field("name"))); });
  tenant.DisplayName = tenant.KeyName;
  if (tenant.Closed) tenant.DisplayName = "(Closed) " + tenant.DisplayName;
  text(tenant.PropertyAddress1, "address1");
  text(tenant.PropertyAddress2, "address2");
  text(tenant.PropertyAddress3, "address3");
  fill("every_amt", [&] {
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
  fill("monthly_day", [&] { tenant.MonthlyDay = FieldAs(ToInt16, row, "monthly_day"); });
  text(tenant.IdNumber, "id_number");
  date(tenant.RentReviewDate, "RentReviewDate");
}

// A percentage has single precision, whatever the column's.
std::string PercentText(const Value& percent) {
  const double* const number = std::get_if<double>(&percent);
  return number != nullptr ? SingleText(*number) : TextOf(percent);
}

// A missing flag is not set.
bool FlagOf(const query::Recordset& row, std::string_view column) {
  return FieldAs([](const Value& flag) { return ToBool(NullTo(flag, Value(false))); }, row, column);
}

std::optional<double> FeeOf(const Value& fee) {
  try {
    return ToDouble(TextOf(fee));
  } catch (const RuntimeError&) {
    return std::nullopt;  // only a letter that prints the fee is affected
  }
}

OwnerRecord& FillOwner(OwnerRecord& owner, const query::Recordset& row) {
  owner.Name = SafeName(TextOf(row.Field("name")));
  owner.Postal1 = TextOf(row.Field("postal1"));
  owner.Postal2 = TextOf(row.Field("postal2"));
  owner.Postal3 = TextOf(row.Field("postal3"));
  owner.Street1 = TextOf(row.Field("street1"));
  owner.Street2 = TextOf(row.Field("street2"));
  owner.Street3 = TextOf(row.Field("street3"));
  owner.Code = TextOf(row.Field("Code"));
  owner.Home = TextOf(row.Field("home"));
  owner.Work = TextOf(row.Field("work"));
  owner.Mobile = TextOf(row.Field("mobile"));
  owner.Fax = TextOf(row.Field("fax"));
  owner.Email = TextOf(row.Field("email"));
  owner.IrdNumber = TextOf(row.Field("ird_number"));
  owner.FeePercent = PercentText(row.Field("fee_percent"));
  owner.AccountName = TextOf(row.Field("account_name"));
  owner.AccountNumber = TextOf(row.Field("account_number"));
  owner.ClosedStatus = FlagOf(row, "ClosedStatus");
  owner.FeeValue = FeeOf(row.Field("fee_value"));
  return owner;
}

}  // namespace

void Caches::Load(Database& database) {
  Load(database, [](const LoadStep& load) { load(); });
}

void Caches::Load(Database& database, const std::function<void(const LoadStep&)>& run) {
  run([&] { CacheTenants(database); });
  run([&] { CacheAccountCodes(database); });
  run([&] { CacheOwners(database); });
  run([&] { CacheProperties(database); });
}

void Caches::CacheTenants(Database& database) {
  ReadTenants(database, std::string(kTenantRows).append(kTenantOrder));
}

void Caches::CacheTenancy(Database& database, std::string_view reference) {
  Owners.clear();
  owners_by_name_.Forget();
  Properties.clear();
  AccountCodes.clear();
  ReadTenants(database, std::string(kTenantRows)
                            .append(" where reference = ")
                            .append(SQLText(reference))
                            .append(kTenantOrder));
}

void Caches::ReadTenants(Database& database, std::string_view sql) {
  // Nothing of an earlier load stays: the payment of an index may be another tenancy's.
  Tenants.clear();
  tenants_by_reference_.Forget();
  LoadErrors errors;
  ForEachRow(database, sql,
             [&](const query::Recordset& row) { FillTenant(errors, row, Tenants.emplace_back()); });
  errors.Show(database.platform().dialogs);
}

void Caches::CacheOwners(Database& database) {
  Owners.clear();
  owners_by_name_.Forget();
  ForEachRow(database, "select * from owner order by name", [&](const query::Recordset& row) {
    if (TextOf(row.Field("name")).empty()) return;
    OwnerRecord& owner = Owners.emplace_back();
    About([&] { return "owner " + owner.Code; }, [&] { FillOwner(owner, row); });
  });
}

void Caches::CacheProperties(Database& database) {
  Properties.clear();
  constexpr std::string_view kQuery =
      "select property.code, ownercode, name, ClosedStatus, email from Property inner join owner "
      "on "
      "property.ownercode = owner.code order by property.Code";
  ForEachRow(database, kQuery, [&](const query::Recordset& row) {
    const std::string code = TextOf(row.Field("code"));
    if (code.empty()) return;
    PropertyRecord& property = Properties.emplace_back();
    property.Code = TrimBlanks(code);
    property.OwnerName = SafeName(TextOf(row.Field("name")));
    property.OwnerCode = TextOf(row.Field("ownercode"));
    property.ClosedStatus = FlagOf(row, "ClosedStatus");
    property.Email = TextOf(row.Field("email"));
  });
}

void Caches::CacheAccountCodes(Database& database) {
  AccountCodes.clear();
  ForEachRow(database, "select * from glcodes where type >200", [&](const query::Recordset& row) {
    AccountCodeRecord& account = AccountCodes.emplace_back();
    account.GlCode = TextOf(row.Field("gl_code"));
    account.Description = TextOf(row.Field("description"));
    account.Type = FieldAs(ToInt16, row, "type");
    account.ExcludeCashflow = FlagOf(row, "exclude_cashflow");
  });
}

TenantRecord* Caches::FindTenant(std::string_view reference) {
  const std::size_t place = tenants_by_reference_.First(Tenants, reference);
  return place == Tenants.size() ? nullptr : &Tenants[place];
}

const OwnerRecord* Caches::FindOwner(std::string_view name) {
  const std::size_t place = owners_by_name_.First(Owners, name);
  return place == Owners.size() ? nullptr : &Owners[place];
}

std::string Caches::KeyNameByReference(std::string_view reference) const {
  for (const TenantRecord& tenant : Tenants) {
    if (tenant.Reference == reference) return tenant.KeyName;
  }
  return "";
}

std::string Caches::ReferenceByKeyName(std::string_view key_name) const {
  for (const TenantRecord& tenant : Tenants) {
    if (tenant.KeyName == key_name) return tenant.Reference;
  }
  return "";
}

std::string SafeName(std::string_view name) {
  std::string safe(TrimBlanks(name));
  std::replace(safe.begin(), safe.end(), '/', '-');
  std::replace(safe.begin(), safe.end(), '\\', '-');
  std::replace(safe.begin(), safe.end(), '"', '`');
  return safe;
}

}  // namespace tenora
