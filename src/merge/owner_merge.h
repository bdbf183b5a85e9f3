// Fills every owner merge code of a letter with the data of one property owner.
#pragma once

#include <optional>

#include "merge/merge_target.h"
#include "merge/template_forms.h"
#include "platform/runtime/error.h"

namespace tenora {

// How an owner merge went. The merge itself reports none of this; who prints or sends the letter
// does.
struct OwnerMergeOutcome {
  bool owner_found = false;
  bool future_dates_inserted = true;  // false: an invalid code stopped them, which was shown
  std::optional<RuntimeError> error;  // that ended the merge
};

// Fills the letter from the cached owner whose name is the recipient's, exactly. The database is
// opened only for a letter with custom fields or forms. Codes already replaced stay replaced when
// an error ends the merge; a name that no owner has leaves every code in place. The loop over the
// owners ends with 6 (Overflow) after the 32767th; an owner found before is not affected. The
// template's forms are filled first, from the first owner of the name.
OwnerMergeOutcome InsertOwnerDetails(const MergeTarget& target,
                                     const TemplateForms* forms = nullptr);

}  // namespace tenora
