#include "merge/cheque_merge.h"

#include "data/sql_text.h"
#include "merge/amount_in_words.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"

namespace tenora {

std::optional<RuntimeError> InsertChequeDetails(const MergeTarget& target, const std::string& payee,
                                                double amount) {
  const Platform& platform = target.session.platform;
  const auto replace = [&](int number, const std::string& value) {
    ReplaceCode(target, CodeAt(kChequeCodes, number), value);
  };
  try {
    ShowRecipientInCaption(target.letter);
    const HiddenEditor hidden(target.letter);
    replace(1, platform.locale.ShortDate(platform.clock.Today()));
    replace(2, payee);
    const ValueWords words = GetValueWords(target.session.settings, amount);
    replace(3, words.line1);
    replace(4, words.line2);
    replace(5, MoneyText(platform.locale, amount));
    return std::nullopt;
  } catch (...) {
    return CurrentError();
  }
}

}  // namespace tenora
