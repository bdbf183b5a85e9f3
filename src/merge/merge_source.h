// What the values of one letter's merge codes are fetched from.
#pragma once

#include <string>

#include "merge/amount_in_words.h"
#include "merge/merge_target.h"
#include "platform/runtime/date.h"
#include "rental/session.h"

namespace tenora {

struct ChequeDetails {
  std::string payee;
  double amount = 0;
  ValueWords words;
};

// Each merge sets the record that its own codes read; everything outlives the merge.
struct MergeSource {
  Session& session;
  const LetterMembers& letter;
  Date now;
  MergeNotes& notes;  // of what is wrong with a value
  const TenantRecord* tenant = nullptr;
  bool payment_found = true;  // false: the fields of the last payment are empty
  const OwnerRecord* owner = nullptr;
  const ChequeDetails* cheque = nullptr;
};

}  // namespace tenora
