// The in-memory working copies of the rental data.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/database.h"
#include "platform/runtime/date.h"
#include "rental/missing_date.h"
#include "rental/record_index.h"

namespace tenora {

// One tenancy with the details of its property.
struct TenantRecord {
  std::string KeyName;      // the tenancy's name made safe for files and keys
  std::string DisplayName;  // KeyName, "(Closed) " in front of a closed one's
  std::string PropertyAddress1, PropertyAddress2, PropertyAddress3;
  double CurrentRent = 0;
  std::string FrequencyText;  // "Week", "2 Weeks"
  double Bond = 0;
  Date LastPaymentDate;  // this and the payment fields below: filled by LastPayment
  double LastPaymentAmount = 0;
  double BalanceOwing = 0;
  bool Closed = false;
  Date StartDate;
  Date LastRentRise;
  std::string Email, HomePhone, WorkPhone, Mobile, Fax;
  Date EndDate;  // of kNoDateYear: still running
  std::string PropertyCode;
  std::string WaterMeter;
  std::string TenantAddress1, TenantAddress2, TenantAddress3;
  std::int16_t MonthlyDay = 0;
  std::string IdNumber;
  double LastPaymentTax = 0;
  double LastPaymentExclusive = 0;
  Date PaidToDate;
  std::int32_t LastPaymentNumber = 0;
  Date LastPeriodFrom, LastPeriodTo;
  std::string LastPaymentTender;
  std::string Reference;  // the tenancy's code
  Date PreviousPaidToDate;
  Date RentReviewDate;  // of kNoDateYear: none
};

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
  std::optional<double> FeeValue;  // none where the database has none, or no number
};

struct PropertyRecord {
  std::string Code;
  std::string OwnerName;  // may be empty
  std::string OwnerCode;
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
  // All four lists from the open database: tenants, account codes, owners, properties. The first
  // error that a load passes on ends the loading.
  void Load(Database& database);
  // The same with each load handed to `run`, which can go on past one that raises.
  using LoadStep = std::function<void()>;
  void Load(Database& database, const std::function<void(const LoadStep& load)>& run);

  // A field that cannot be converted keeps its default and the load goes on with the next; at the
  // end one box titled "CacheTenants" shows the first such error and how many there were where.
  void CacheTenants(Database& database);
  // What a letter to one tenancy needs: only the tenancies with this code, in any letter case, and
  // nothing in the other lists. Errors as of CacheTenants.
  void CacheTenancy(Database& database, std::string_view reference);
  // Errors pass to the caller; the list holds the rows up to the failing one. A missing fee or flag
  // is no error.
  void CacheAccountCodes(Database& database);
  void CacheOwners(Database& database);
  void CacheProperties(Database& database);

  // The first tenancy with this code (exact), or null.
  TenantRecord* FindTenant(std::string_view reference);
  // The first owner with this name (exact), or null. Others of the name come behind it in the list.
  const OwnerRecord* FindOwner(std::string_view name);
  std::string KeyNameByReference(std::string_view reference) const;
  // The first in cache order wins where two tenancies share a name.
  std::string ReferenceByKeyName(std::string_view key_name) const;

  std::vector<TenantRecord> Tenants;
  std::vector<OwnerRecord> Owners;
  std::vector<PropertyRecord> Properties;
  std::vector<AccountCodeRecord> AccountCodes;

 private:
  void ReadTenants(Database& database, std::string_view sql);

  RecordIndex<TenantRecord> tenants_by_reference_{&TenantRecord::Reference};
  RecordIndex<OwnerRecord> owners_by_name_{&OwnerRecord::Name};
};

// Trimmed, "/" and "\" as "-", a double quote as "`": safe as a file name and as a list key.
std::string SafeName(std::string_view name);

}  // namespace tenora
