// Fills every tenant merge code of a letter with the data of one tenancy.
#pragma once

#include <optional>

#include "merge/merge_target.h"
#include "merge/template_forms.h"
#include "platform/runtime/error.h"

namespace tenora {

// How a tenant merge went. The merge itself reports none of this; the print commands do, because
// paper with codes on it is not a receipt.
struct TenantMergeOutcome {
  bool tenant_found = false;
  bool receipt_number_issued = true;  // false: the letter asks for one that was not issued
  bool future_dates_inserted = true;  // false: an invalid code stopped them, which was shown
  std::optional<RuntimeError> error;  // that ended the merge
};

// Opens the database for the time of the merge. Codes already replaced stay replaced when an error
// ends it. A tenant code that is not in the cache leaves every code but print date and time.
// The template's forms, where it has any, are filled ahead of the codes of a tenancy that is found.
TenantMergeOutcome InsertTenantDetails(const MergeTarget& target,
                                       const TemplateForms* forms = nullptr);

}  // namespace tenora
