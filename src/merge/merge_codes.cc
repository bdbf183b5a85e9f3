#include "merge/merge_codes.h"

#include <string>

#include "data/sql_text.h"
#include "merge/merge_source.h"
#include "platform/locale/locale.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "rental/missing_date.h"
#include "rental/tenant_lookups.h"

namespace tenora {
namespace {

using S = const MergeSource&;

std::string LongDate(S s, Date date) {
  if (date.Year() == kEmptyYear) {
    s.notes.Add(MergeFact::kNoDate);
    return "";
  }
  std::string text = s.session.platform.locale.LongDate(date);
  if (date.Year() == kNoDateYear) s.notes.Add(MergeFact::kPlaceholder, text);
  return text;
}

// Without an inspection the present time is given, and noted.
std::string Inspection(S s, bool next) {
  const auto date = FindInspection(s.session, next, s.letter.TenantCode);
  if (date && DateMeansNone(*date)) return LongDate(s, *date);
  std::string text = InspectionDate(s.session, date);
  if (!date) s.notes.Add(MergeFact::kPlaceholder, text);
  return text;
}

std::string Money(S s, double amount) { return MoneyText(s.session.platform.locale, amount); }

// A fee that is missing stops the letters that print it, no others.
double FeeValue(S s) {
  if (s.owner->FeeValue) return *s.owner->FeeValue;
  throw StandardError(error_number::kTypeMismatch,
                      "column \"fee_value\": owner " + s.owner->Code +
                          " has no fee; enter it in the rental package, or use a template "
                          "without <<Fee Value>>");
}

// The present balance and paid-to dates say nothing about an earlier payment: a receipt letter
// leaves them empty.
bool IsReceipt(S s) { return s.letter.ReceiptNumber != 0; }

constexpr MergeCode kTenantCodes[] = {
    {"Print Date", CodeSource::kClock, [](S s) { return LongDate(s, s.now); }},
    {"Print Time", CodeSource::kClock, [](S s) { return FormatDate(s.now, "HH:NN"); }},
    {"Tenant Name", CodeSource::kTenancy, [](S s) { return s.tenant->KeyName; }},
    {"Property Address 1", CodeSource::kTenancy, [](S s) { return s.tenant->PropertyAddress1; }},
    {"Property Address 2", CodeSource::kTenancy, [](S s) { return s.tenant->PropertyAddress2; }},
    {"Property Address 3", CodeSource::kTenancy, [](S s) { return s.tenant->PropertyAddress3; }},
    {"Email", CodeSource::kTenancy, [](S s) { return s.tenant->Email; }},
    {"Home Phone", CodeSource::kTenancy, [](S s) { return s.tenant->HomePhone; }},
    {"Work Phone", CodeSource::kTenancy, [](S s) { return s.tenant->WorkPhone; }},
    {"Mobile", CodeSource::kTenancy, [](S s) { return s.tenant->Mobile; }},
    {"Fax", CodeSource::kTenancy, [](S s) { return s.tenant->Fax; }},
    {"Current Rent", CodeSource::kTenancy, [](S s) { return Money(s, s.tenant->CurrentRent); }},
    {"Rent Frequency", CodeSource::kTenancy, [](S s) { return s.tenant->FrequencyText; }},
    {"Bond Amount", CodeSource::kTenancy, [](S s) { return Money(s, s.tenant->Bond); }},
    {"Tenancy Start Date", CodeSource::kTenancy,
     [](S s) { return LongDate(s, s.tenant->StartDate); }},
    {"Tenancy End Date", CodeSource::kTenancy, [](S s) { return LongDate(s, s.tenant->EndDate); }},
    {"Last Rent Rise", CodeSource::kTenancy,
     [](S s) { return LongDate(s, s.tenant->LastRentRise); }},
    {"Last Payment Date", CodeSource::kLastPayment,
     [](S s) { return LongDate(s, s.tenant->LastPaymentDate); }},
    {"Last Payment Amount", CodeSource::kLastPayment,
     [](S s) { return Money(s, s.tenant->LastPaymentAmount); }},
    {"Last Payment Number", CodeSource::kLastPayment,
     [](S s) { return std::to_string(s.tenant->LastPaymentNumber); }},
    {"Last Payment Tax", CodeSource::kLastPayment,
     [](S s) { return Money(s, s.tenant->LastPaymentTax); }},
    {"Last Payment Excl.", CodeSource::kLastPayment,
     [](S s) { return Money(s, s.tenant->LastPaymentExclusive); }},
    {"Last Payment Tender", CodeSource::kLastPayment,
     [](S s) { return s.tenant->LastPaymentTender; }},
    {"Balance Owing", CodeSource::kRentAccount,
     [](S s) { return IsReceipt(s) ? "" : Money(s, s.tenant->BalanceOwing); }},
    {"Paid To Date", CodeSource::kRentAccount,
     [](S s) { return IsReceipt(s) ? "" : LongDate(s, s.tenant->PaidToDate); }},
    {"Previous Paid To Date", CodeSource::kRentAccount,
     [](S s) { return IsReceipt(s) ? "" : LongDate(s, s.tenant->PreviousPaidToDate); }},
    {"Last Inspection", CodeSource::kTenancy, [](S s) { return Inspection(s, false); }},
    {"Next Inspection", CodeSource::kTenancy, [](S s) { return Inspection(s, true); }},
    {kPromptMessageItem, CodeSource::kMenuCommand, nullptr},
    {"Property Code", CodeSource::kTenancy, [](S s) { return s.tenant->PropertyCode; }},
    {"Property Owners Name", CodeSource::kTenancy,
     [](S s) { return OwnerNameOfProperty(s.session, s.tenant->PropertyCode); }},
    {"Water Meter", CodeSource::kTenancy, [](S s) { return s.tenant->WaterMeter; }},
    {"Contact Address1", CodeSource::kTenancy, [](S s) { return s.tenant->TenantAddress1; }},
    {"Contact Address2", CodeSource::kTenancy, [](S s) { return s.tenant->TenantAddress2; }},
    {"Contact Address3", CodeSource::kTenancy, [](S s) { return s.tenant->TenantAddress3; }},
    {"Monthly Rent Date", CodeSource::kTenancy,
     [](S s) { return std::to_string(s.tenant->MonthlyDay); }},
    {"ID Number", CodeSource::kTenancy, [](S s) { return s.tenant->IdNumber; }},
    {"Current Period Start", CodeSource::kRentAccount,
     [](S s) { return LongDate(s, s.tenant->LastPeriodFrom); }},
    {"Current Period End", CodeSource::kRentAccount,
     [](S s) { return LongDate(s, s.tenant->LastPeriodTo); }},
    {"Next Period Start", CodeSource::kRentAccount,
     [](S s) { return LongDate(s, s.tenant->LastPeriodTo.AddDays(1)); }},
    {"Tenant Code", CodeSource::kTenancy, [](S s) { return s.tenant->Reference; }},
    {"Next Rent Change Date", CodeSource::kTenancy,
     [](S s) { return NextRentChangeDate(s.session, s.letter.TenantCode); }},
    {"Next Rent Change Value", CodeSource::kTenancy,
     [](S s) { return NextRentChangeValue(s.session, s.letter.TenantCode); }},
    {"Rent Review Date", CodeSource::kTenancy,
     [](S s) {
       const Date date = s.tenant->RentReviewDate;
       return date.Year() == kNoDateYear ? "" : LongDate(s, date);
     }},
    {kFutureDateItem, CodeSource::kMenuCommand, nullptr},
};

constexpr MergeCode kOwnerCodes[] = {
    {"Print Date", CodeSource::kClock, [](S s) { return LongDate(s, s.now); }},
    {"Name", CodeSource::kOwner, [](S s) { return s.owner->Name; }},
    {"Code", CodeSource::kOwner, [](S s) { return s.owner->Code; }},
    {"Postal Address 1", CodeSource::kOwner, [](S s) { return s.owner->Postal1; }},
    {"Postal Address 2", CodeSource::kOwner, [](S s) { return s.owner->Postal2; }},
    {"Postal Address 3", CodeSource::kOwner, [](S s) { return s.owner->Postal3; }},
    {"Street Address 1", CodeSource::kOwner, [](S s) { return s.owner->Street1; }},
    {"Street Address 2", CodeSource::kOwner, [](S s) { return s.owner->Street2; }},
    {"Street Address 3", CodeSource::kOwner, [](S s) { return s.owner->Street3; }},
    {"Home Phone", CodeSource::kOwner, [](S s) { return s.owner->Home; }},
    {"Work Phone", CodeSource::kOwner, [](S s) { return s.owner->Work; }},
    {"Mobile Phone", CodeSource::kOwner, [](S s) { return s.owner->Mobile; }},
    {"Fax Number", CodeSource::kOwner, [](S s) { return s.owner->Fax; }},
    {"Email Address", CodeSource::kOwner, [](S s) { return s.owner->Email; }},
    // Plain numbers, unlike a tenant's amounts: 12.5, 100, 0.
    {"Fee Percent", CodeSource::kOwner, [](S s) { return s.owner->FeePercent; }},
    {"Fee Value", CodeSource::kOwner, [](S s) { return NumberText(FeeValue(s)); }},
    {"Tax Number", CodeSource::kOwner, [](S s) { return s.owner->IrdNumber; }},
    {"Bank Account Name", CodeSource::kOwner, [](S s) { return s.owner->AccountName; }},
    {"Bank Account Number", CodeSource::kOwner, [](S s) { return s.owner->AccountNumber; }},
    {kFutureDateItem, CodeSource::kMenuCommand, nullptr},
};

constexpr MergeCode kChequeCodes[] = {
    // Short, unlike the date of a letter.
    {"Print Date", CodeSource::kClock,
     [](S s) { return s.session.platform.locale.ShortDate(s.now); }},
    {"Payee Name", CodeSource::kCheque, [](S s) { return s.cheque->payee; }},
    {"Value in words 1", CodeSource::kCheque, [](S s) { return s.cheque->words.line1; }},
    {"Value in words 2", CodeSource::kCheque, [](S s) { return s.cheque->words.line2; }},
    {"Value in numbers", CodeSource::kCheque, [](S s) { return Money(s, s.cheque->amount); }},
};

}  // namespace

std::span<const MergeCode> MergeCodesOf(TemplateKind kind) {
  switch (kind) {
    case TemplateKind::kTenant:
      return kTenantCodes;
    case TemplateKind::kOwner:
      return kOwnerCodes;
    case TemplateKind::kCheque:
      return kChequeCodes;
  }
  return {};
}

}  // namespace tenora
