#include "merge/owner_merge.h"

#include <cstddef>
#include <limits>
#include <string>

#include "data/opened_database.h"
#include "merge/custom_fields.h"
#include "merge/future_dates.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"

namespace tenora {
namespace {

struct CodeValue {
  int number;  // position in the owner list
  std::string (*value)(const OwnerRecord&);
};

using O = const OwnerRecord&;

// Every code but the print date, in the order of their replacement. "Future Date" (20) is a command
// of the insert menu and never replaced.
constexpr CodeValue kValues[] = {
    {2, [](O o) { return o.Name; }},
    {3, [](O o) { return o.Code; }},
    {4, [](O o) { return o.Postal1; }},
    {5, [](O o) { return o.Postal2; }},
    {6, [](O o) { return o.Postal3; }},
    {7, [](O o) { return o.Street1; }},
    {8, [](O o) { return o.Street2; }},
    {9, [](O o) { return o.Street3; }},
    {10, [](O o) { return o.Home; }},
    {11, [](O o) { return o.Work; }},
    {12, [](O o) { return o.Mobile; }},
    {13, [](O o) { return o.Fax; }},
    {14, [](O o) { return o.Email; }},
    // Plain numbers, unlike a tenant's amounts: 12.5, 100, 0.
    {15, [](O o) { return o.FeePercent; }},
    {16, [](O o) { return NumberText(o.FeeValue); }},
    {17, [](O o) { return o.IrdNumber; }},
    {18, [](O o) { return o.AccountName; }},
    {19, [](O o) { return o.AccountNumber; }},
};

void FillFrom(const MergeTarget& target, const OwnerRecord& owner, OwnerMergeOutcome& outcome) {
  const Platform& platform = target.session.platform;
  ReplaceCode(target, CodeAt(kOwnerCodes, 1), platform.locale.LongDate(platform.clock.Today()));
  for (const CodeValue& entry : kValues) {
    const std::string_view code = CodeAt(kOwnerCodes, entry.number);
    if (CodePresent(target, code)) ReplaceCode(target, code, entry.value(owner));
  }
  if (SourceContains(target.editor, std::string(kCodeStart).append(kOwnerCustomPrefix))) {
    const OpenedDatabase opened(target.session.database);
    InsertCustomFields(target, kOwnerParent, owner.Code, kOwnerCustomPrefix);
  }
  if (SourceContains(target.editor, kFutureDateStart) && !InsertFutureDates(target)) {
    outcome.future_dates_inserted = false;
  }
}

// What the walk's counter holds.
constexpr std::size_t kLastOwner = std::numeric_limits<std::int16_t>::max();

void FillFromEveryNamesake(const MergeTarget& target, OwnerMergeOutcome& outcome) {
  std::size_t number = 0;
  for (const OwnerRecord& owner : target.session.caches.Owners) {
    // The counter's size is deliberate. A letter that has been filled by then lacks nothing.
    if (++number > kLastOwner) {
      if (outcome.owner_found) return;
      throw StandardError(error_number::kOverflow);
    }
    if (owner.Name != target.letter.RecipientName) continue;
    outcome.owner_found = true;
    // A later owner of the same name finds the codes replaced.
    FillFrom(target, owner, outcome);
  }
}

}  // namespace

OwnerMergeOutcome InsertOwnerDetails(const MergeTarget& target) {
  OwnerMergeOutcome outcome;
  try {
    ShowRecipientInCaption(target.letter);
    const HiddenEditor hidden(target.letter);
    FillFromEveryNamesake(target, outcome);
  } catch (...) {
    outcome.error = CurrentError();
  }
  return outcome;
}

}  // namespace tenora
