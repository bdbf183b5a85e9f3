// The in-memory working copies of the rental data.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "data/database.h"
#include "rental/tenant_record.h"

namespace tenora {

struct OwnerRecord {
  std::string Name;  // trimmed and made safe like a tenant's KeyName
  std::string Postal1, Postal2, Postal3;
  std::string Street1, Street2, Street3;
  std::string Code;
  std::string Home, Work, Mobile, Fax, Email;
  std::string IrdNumber;
  std::string FeePercent;
  std::string AccountName, AccountNumber;
  bool ClosedStatus = false;
  double FeeValue = 0;
};

struct PropertyRecord {
  std::string Code;
  std::string OwnerName;
  bool ClosedStatus = false;
  std::string Email;
};

struct AccountCodeRecord {
  std::string GlCode;
  std::string Description;
  std::int16_t Type = 0;
  bool ExcludeCashflow = false;
};

// Each load replaces its list by the database's present rows, in the order of its query.
class Caches {
 public:
  // Errors are shown one by one under "CacheTenants" and the load goes on with the next field.
  void CacheTenants(Database& database);
  // Errors pass to the caller; the list holds the rows up to the failing one.
  void CacheAccountCodes(Database& database);
  void CacheOwners(Database& database);
  void CacheProperties(Database& database);

  // The first tenancy with this code (exact), or null.
  TenantRecord* FindTenant(std::string_view reference);
  std::string KeyNameByReference(std::string_view reference) const;
  // The first in cache order wins where two tenancies share a name.
  std::string ReferenceByKeyName(std::string_view key_name) const;

  std::vector<TenantRecord> Tenants;
  std::vector<OwnerRecord> Owners;
  std::vector<PropertyRecord> Properties;
  std::vector<AccountCodeRecord> AccountCodes;
};

// Trimmed, "/" and "\" as "-", a double quote as "`": safe as a file name and as a list key.
std::string SafeName(std::string_view name);

}  // namespace tenora
