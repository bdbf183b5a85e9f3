#include "merge/cheque_merge.h"

#include "merge/amount_in_words.h"
#include "merge/merge_codes.h"
#include "merge/merge_source.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"

namespace tenora {

std::optional<RuntimeError> InsertChequeDetails(const MergeTarget& target, const std::string& payee,
                                                double amount) {
  try {
    ShowRecipientInCaption(target.letter);
    const ChequeDetails cheque{payee, amount, GetValueWords(target.session.settings, amount)};
    const MergeSource source{.session = target.session,
                             .letter = target.letter,
                             .now = target.session.platform.clock.Now(),
                             .notes = target.letter.Notes,
                             .cheque = &cheque};
    for (const MergeCode& code : MergeCodesOf(TemplateKind::kCheque)) {
      FillCode(target, code, source);
    }
    return std::nullopt;
  } catch (...) {
    return CurrentError();
  }
}

}  // namespace tenora
