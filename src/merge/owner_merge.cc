#include "merge/owner_merge.h"

#include <cstddef>
#include <limits>
#include <string>

#include "data/database.h"
#include "merge/custom_fields.h"
#include "merge/future_dates.h"
#include "merge/merge_codes.h"
#include "merge/merge_source.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"

namespace tenora {
namespace {

void FillFrom(const MergeTarget& target, const OwnerRecord& owner, OwnerMergeOutcome& outcome) {
  const MergeSource source{.session = target.session,
                           .letter = target.letter,
                           .now = target.session.platform.clock.Now(),
                           .notes = target.letter.Notes,
                           .owner = &owner};
  for (const MergeCode& code : MergeCodesOf(TemplateKind::kOwner)) FillCode(target, code, source);
  if (SourceContains(target.editor, std::string(kCodeStart).append(kOwnerCustomPrefix))) {
    const OpenedDatabase opened(target.session.database);
    InsertCustomFields(target, kOwnerParent, owner.Code, kOwnerCustomPrefix);
  }
  if (SourceContains(target.editor, kFutureDateStart) && !InsertFutureDates(target)) {
    outcome.future_dates_inserted = false;
  }
}

// The largest value of the loop's counter.
constexpr std::size_t kLastOwner = std::numeric_limits<std::int16_t>::max();

void FillFromEveryNamesake(const MergeTarget& target, const TemplateForms* forms,
                           OwnerMergeOutcome& outcome) {
  std::size_t number = 0;
  for (const OwnerRecord& owner : target.session.caches.Owners) {
    // The counter's size is deliberate. A letter that has been filled by then is complete.
    if (++number > kLastOwner) {
      if (outcome.owner_found) return;
      throw StandardError(error_number::kOverflow);
    }
    if (owner.Name != target.letter.RecipientName) continue;
    if (forms != nullptr && !outcome.owner_found) {
      const OpenedDatabase opened(target.session.database);
      forms->Fill(target, owner);
    }
    outcome.owner_found = true;
    // A later owner of the same name finds the codes replaced.
    FillFrom(target, owner, outcome);
  }
}

}  // namespace

OwnerMergeOutcome InsertOwnerDetails(const MergeTarget& target, const TemplateForms* forms) {
  OwnerMergeOutcome outcome;
  try {
    ShowRecipientInCaption(target.letter);
    FillFromEveryNamesake(target, forms, outcome);
  } catch (...) {
    outcome.error = CurrentError();
  }
  return outcome;
}

}  // namespace tenora
