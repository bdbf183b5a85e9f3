#include "merge/tenant_merge.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "data/database.h"
#include "data/sql_text.h"
#include "merge/building_receipt_number.h"
#include "merge/custom_fields.h"
#include "merge/future_dates.h"
#include "merge/merge_codes.h"
#include "merge/merge_source.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"
#include "rental/tenant_lookups.h"

namespace tenora {
namespace {

void ReplaceClockCodes(const MergeTarget& target, const MergeSource& source) {
  for (const MergeCode& code : MergeCodesOf(TemplateKind::kTenant)) {
    if (code.source == CodeSource::kClock) FillCode(target, code, source);
  }
}

// Fills the other codes of a found tenancy. Look-ups are run only for codes that the letter holds:
// each costs a query or more, and an absent code must cost one search. `payment_found` is the
// result of LastPayment where the forms have run it.
void ReplaceTenancyCodes(const MergeTarget& target, MergeSource& source, TenantRecord& tenant,
                         const std::optional<bool>& payment_found) {
  const auto codes = MergeCodesOf(TemplateKind::kTenant);
  bool last_payment_known = payment_found.has_value();
  if (payment_found) source.payment_found = *payment_found;
  const auto needs_last_payment = [&](const MergeCode& code) {
    return !last_payment_known &&
           (code.source == CodeSource::kLastPayment || code.source == CodeSource::kRentAccount) &&
           CodePresent(target, code.name);
  };
  const auto run_last_payment = [&] {
    source.payment_found = LastPayment(target.session, tenant, target.letter.ReceiptNumber);
    last_payment_known = true;
  };
  // Before the first replacement, so that a failing look-up leaves the letter as it is.
  if (std::ranges::any_of(codes, needs_last_payment)) run_last_payment();
  for (const MergeCode& code : codes) {
    if (code.source == CodeSource::kClock) continue;
    // A value inserted earlier may itself contain a payment code.
    if (needs_last_payment(code)) run_last_payment();
    FillCode(target, code, source);
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

}  // namespace

TenantMergeOutcome InsertTenantDetails(const MergeTarget& target, const TemplateForms* forms) {
  LetterMembers& letter = target.letter;
  Caches& caches = target.session.caches;
  TenantMergeOutcome outcome;
  try {
    ShowRecipientInCaption(letter);
    const OpenedDatabase opened(target.session.database);
    if (letter.TenantCode.empty()) {
      letter.TenantCode = caches.ReferenceByKeyName(letter.RecipientName);
    }
    TenantRecord* const tenant = caches.FindTenant(letter.TenantCode);
    std::optional<bool> payment_found;
    if (tenant != nullptr && forms != nullptr) payment_found = forms->Fill(target, *tenant);
    MergeSource source{target.session, letter, target.session.platform.clock.Now(), letter.Notes};
    ReplaceClockCodes(target, source);
    outcome.tenant_found = tenant != nullptr;
    if (tenant != nullptr) {
      source.tenant = tenant;
      ReplaceTenancyCodes(target, source, *tenant, payment_found);
      ReplaceSpecialForms(target, *tenant, outcome);
    }
  } catch (...) {
    outcome.error = CurrentError();
  }
  return outcome;
}

}  // namespace tenora
