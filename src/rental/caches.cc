#include "rental/caches.h"

#include <algorithm>

#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"
#include "rental/row_field.h"

namespace tenora {
namespace {

// A percentage has single precision, whatever the column's.
std::string PercentText(const Value& percent) {
  const double* const number = std::get_if<double>(&percent);
  return number != nullptr ? SingleText(*number) : TextOf(percent);
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
  owner.ClosedStatus = FieldAs(ToBool, row, "ClosedStatus");
  // By way of its text, as which a null is empty and no number.
  owner.FeeValue =
      FieldAs([](const Value& fee) { return ToDouble(TextOf(fee)); }, row, "fee_value");
  return owner;
}

}  // namespace

void Caches::CacheOwners(Database& database) {
  Owners.clear();
  RecordsetPtr rows;
  database.CreateSet(rows, "select * from owner order by name", query::kForwardOnly,
                     query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    if (TextOf(rows->Field("name")).empty()) continue;
    OwnerRecord& owner = Owners.emplace_back();
    About([&] { return "owner " + owner.Code; }, [&] { FillOwner(owner, *rows); });
  }
}

void Caches::CacheProperties(Database& database) {
  Properties.clear();
  RecordsetPtr rows;
  database.CreateSet(rows,
                     "select property.code, name, ClosedStatus, email from Property inner join "
                     "owner on property.ownercode = owner.code order by property.Code",
                     query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    const std::string code = TextOf(rows->Field("code"));
    if (code.empty()) continue;
    PropertyRecord& property = Properties.emplace_back();
    property.Code = TrimBlanks(code);
    property.OwnerName = SafeName(TextOf(rows->Field("name")));
    property.ClosedStatus = FieldAs(ToBool, *rows, "ClosedStatus");
    property.Email = TextOf(rows->Field("email"));
  }
}

void Caches::CacheAccountCodes(Database& database) {
  AccountCodes.clear();
  RecordsetPtr rows;
  database.CreateSet(rows, "select * from glcodes where type >200", query::kForwardOnly,
                     query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    AccountCodeRecord& account = AccountCodes.emplace_back();
    account.GlCode = TextOf(rows->Field("gl_code"));
    account.Description = TextOf(rows->Field("description"));
    account.Type = FieldAs(ToInt16, *rows, "type");
    account.ExcludeCashflow = FieldAs(ToBool, *rows, "exclude_cashflow");
  }
}

TenantRecord* Caches::FindTenant(std::string_view reference) {
  const auto found = std::find_if(Tenants.begin(), Tenants.end(), [&](const TenantRecord& tenant) {
    return tenant.Reference == reference;
  });
  return found == Tenants.end() ? nullptr : &*found;
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
