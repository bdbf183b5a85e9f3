// Fills the merge codes of a cheque.
#pragma once

#include <optional>
#include <string>

#include "merge/merge_target.h"
#include "platform/runtime/error.h"

namespace tenora {

// Fills payee, amount in words and in numbers, and today's date as a short date. The result is the
// error that ended the merge, which is not shown: codes replaced before it stay replaced, and such
// a letter is not a cheque.
std::optional<RuntimeError> InsertChequeDetails(const MergeTarget& target, const std::string& payee,
                                                double amount);

}  // namespace tenora
