#include "merge/tenant_merge.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "data/opened_database.h"
#include "data/sql_text.h"
#include "merge/building_receipt_number.h"
#include "merge/custom_fields.h"
#include "merge/future_dates.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/format.h"
#include "rental/tenant_lookups.h"

namespace tenora {
namespace {

// What the values of a letter are taken from.
struct Recipient {
  Session& session;
  const LetterMembers& letter;
  TenantRecord& tenant;

  std::string LongDate(Date date) const { return session.platform.locale.LongDate(date); }
  std::string Money(double amount) const { return MoneyText(session.platform.locale, amount); }
  // The present balance and paid-to dates say nothing about an earlier payment: a receipt letter
  // leaves them empty.
  bool IsReceipt() const { return letter.ReceiptNumber != 0; }
};

enum class From { kTenancy, kLastPayment };

struct CodeValue {
  int number;  // position in the tenant list
  From from;   // kLastPayment: the record's field is filled by the last-payment look-up
  std::string (*value)(const Recipient&);
};

using R = const Recipient&;

// Every code but the print date and time, in the order of their replacement. "Prompt Message" (29)
// and "Future Date" (45) are commands of the insert menu and never replaced.
constexpr CodeValue kValues[] = {
    {3, From::kTenancy, [](R r) { return r.tenant.KeyName; }},
    {4, From::kTenancy, [](R r) { return r.tenant.PropertyAddress1; }},
    {5, From::kTenancy, [](R r) { return r.tenant.PropertyAddress2; }},
    {6, From::kTenancy, [](R r) { return r.tenant.PropertyAddress3; }},
    {7, From::kTenancy, [](R r) { return r.tenant.Email; }},
    {8, From::kTenancy, [](R r) { return r.tenant.HomePhone; }},
    {9, From::kTenancy, [](R r) { return r.tenant.WorkPhone; }},
    {10, From::kTenancy, [](R r) { return r.tenant.Mobile; }},
    {11, From::kTenancy, [](R r) { return r.tenant.Fax; }},
    {12, From::kTenancy, [](R r) { return r.Money(r.tenant.CurrentRent); }},
    {13, From::kTenancy, [](R r) { return r.tenant.FrequencyText; }},
    {14, From::kTenancy, [](R r) { return r.Money(r.tenant.Bond); }},
    {15, From::kTenancy, [](R r) { return r.LongDate(r.tenant.StartDate); }},
    {16, From::kTenancy, [](R r) { return r.LongDate(r.tenant.EndDate); }},
    {17, From::kTenancy, [](R r) { return r.LongDate(r.tenant.LastRentRise); }},
    {18, From::kLastPayment, [](R r) { return r.LongDate(r.tenant.LastPaymentDate); }},
    {19, From::kLastPayment, [](R r) { return r.Money(r.tenant.LastPaymentAmount); }},
    {20, From::kLastPayment, [](R r) { return std::to_string(r.tenant.LastPaymentNumber); }},
    {21, From::kLastPayment, [](R r) { return r.Money(r.tenant.LastPaymentTax); }},
    {22, From::kLastPayment, [](R r) { return r.Money(r.tenant.LastPaymentExclusive); }},
    {23, From::kLastPayment, [](R r) { return r.tenant.LastPaymentTender; }},
    {24, From::kLastPayment,
     [](R r) { return r.IsReceipt() ? "" : r.Money(r.tenant.BalanceOwing); }},
    {25, From::kLastPayment,
     [](R r) { return r.IsReceipt() ? "" : r.LongDate(r.tenant.PaidToDate); }},
    {26, From::kLastPayment,
     [](R r) { return r.IsReceipt() ? "" : r.LongDate(r.tenant.PreviousPaidToDate); }},
    {27, From::kTenancy, [](R r) { return InspectionDate(r.session, false, r.letter.TenantCode); }},
    {28, From::kTenancy, [](R r) { return InspectionDate(r.session, true, r.letter.TenantCode); }},
    {30, From::kTenancy, [](R r) { return r.tenant.PropertyCode; }},
    {31, From::kTenancy, [](R r) { return OwnerNameOfProperty(r.session, r.tenant.PropertyCode); }},
    {32, From::kTenancy, [](R r) { return r.tenant.WaterMeter; }},
    {33, From::kTenancy, [](R r) { return r.tenant.TenantAddress1; }},
    {34, From::kTenancy, [](R r) { return r.tenant.TenantAddress2; }},
    {35, From::kTenancy, [](R r) { return r.tenant.TenantAddress3; }},
    {36, From::kTenancy, [](R r) { return std::to_string(r.tenant.MonthlyDay); }},
    {37, From::kTenancy, [](R r) { return r.tenant.IdNumber; }},
    {38, From::kLastPayment, [](R r) { return r.LongDate(r.tenant.LastPeriodFrom); }},
    {39, From::kLastPayment, [](R r) { return r.LongDate(r.tenant.LastPeriodTo); }},
    {40, From::kLastPayment, [](R r) { return r.LongDate(r.tenant.LastPeriodTo.AddDays(1)); }},
    {41, From::kTenancy, [](R r) { return r.tenant.Reference; }},
    {42, From::kTenancy, [](R r) { return NextRentChangeDate(r.session, r.letter.TenantCode); }},
    {43, From::kTenancy, [](R r) { return NextRentChangeValue(r.session, r.letter.TenantCode); }},
    {44, From::kTenancy,
     [](R r) {
       const Date date = r.tenant.RentReviewDate;
       return date.Year() == kNoDateYear ? "" : r.LongDate(date);
     }},
};

// Fills the catalogue codes of a found tenancy. Look-ups are run only for codes that the letter
// holds: each costs a query or more, and an absent code must cost one search.
void ReplaceCatalogueCodes(const MergeTarget& target, TenantRecord& tenant) {
  const Recipient recipient{target.session, target.letter, tenant};
  const auto present = [&](const CodeValue& entry) {
    return CodePresent(target, CodeAt(kTenantCodes, entry.number));
  };
  bool last_payment_known = false;
  const auto run_last_payment = [&] {
    if (!last_payment_known) {
      LastPayment(target.session, tenant, target.letter.ReceiptNumber);
    }
    last_payment_known = true;
  };
  // Before the first replacement, so that a failing look-up leaves the letter as it is.
  if (std::ranges::any_of(kValues, [&](const CodeValue& entry) {
        return entry.from == From::kLastPayment && present(entry);
      })) {
    run_last_payment();
  }
  for (const CodeValue& entry : kValues) {
    if (!present(entry)) continue;
    // A value put in before may itself hold a payment code.
    if (entry.from == From::kLastPayment) run_last_payment();
    const std::string_view code = CodeAt(kTenantCodes, entry.number);
    ReplaceCode(target, code,
                About([&] { return std::string("<<").append(code).append(">>"); },
                      [&] { return entry.value(recipient); }));
  }
}

void ReplaceSpecialForms(const MergeTarget& target, const TenantRecord& tenant,
                         TenantMergeOutcome& outcome) {
  const auto has_custom = [&](std::string_view prefix) {
    return SourceContains(target.editor, std::string(kCodeStart).append(prefix));
  };
  if (has_custom(kTenantCustomPrefix)) {
    InsertCustomFields(target, kTenantParent, target.letter.TenantCode, kTenantCustomPrefix);
  }
  if (has_custom(kPropertyCustomPrefix)) {
    InsertCustomFields(target, kPropertyParent, tenant.PropertyCode, kPropertyCustomPrefix);
  }
  if (SourceContains(target.editor, TagInSource(target.editor, kBuildingReceiptNumber))) {
    outcome.receipt_number_issued = InsertBuildingReceiptNumber(target, tenant.PropertyCode);
  }
  if (SourceContains(target.editor, kFutureDateStart)) {
    outcome.future_dates_inserted = InsertFutureDates(target);
  }
}

void ReplacePrintTime(const MergeTarget& target) {
  const Platform& platform = target.session.platform;
  const Date now = platform.clock.Now();
  ReplaceCode(target, CodeAt(kTenantCodes, 1), platform.locale.LongDate(now));
  ReplaceCode(target, CodeAt(kTenantCodes, 2), FormatDate(now, "HH:NN"));
}

}  // namespace

TenantMergeOutcome InsertTenantDetails(const MergeTarget& target) {
  LetterMembers& letter = target.letter;
  Caches& caches = target.session.caches;
  TenantMergeOutcome outcome;
  try {
    ShowRecipientInCaption(letter);
    const OpenedDatabase opened(target.session.database);
    if (letter.TenantCode.empty()) {
      letter.TenantCode = caches.ReferenceByKeyName(letter.RecipientName);
    }
    const HiddenEditor hidden(letter);
    ReplacePrintTime(target);
    TenantRecord* const tenant = caches.FindTenant(letter.TenantCode);
    outcome.tenant_found = tenant != nullptr;
    if (tenant != nullptr) {
      ReplaceCatalogueCodes(target, *tenant);
      ReplaceSpecialForms(target, *tenant, outcome);
    }
  } catch (...) {
    outcome.error = CurrentError();
  }
  return outcome;
}

}  // namespace tenora
