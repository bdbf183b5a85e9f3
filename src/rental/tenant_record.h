// One tenancy with the details of its property.
#pragma once

#include <cstdint>
#include <string>

#include "platform/runtime/date.h"

namespace tenora {

// The year by which the package's own data says "no date".
inline constexpr int kNoDateYear = 1234;

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

}  // namespace tenora
