#include "startup/cheque_word.h"

#include <exception>

#include "platform/locale/locale.h"
#include "platform/runtime/date.h"

namespace tenora {

void SetChequeWord(Session& session) {
  session.cheque_word = "Cheque";
  try {
    const std::string date = session.platform.locale.ShortDate(Date::FromCalendar(2000, 12, 22));
    if (!date.starts_with('2')) session.cheque_word = "Check";
  } catch (const std::exception&) {
    // Deliberate: the word stays as it is.
  }
}

}  // namespace tenora
