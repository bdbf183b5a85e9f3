// The locale's spelling of "cheque".
#pragma once

#include "rental/session.h"

namespace tenora {

// Sets the session's cheque word: "Cheque" where the short date of 22 December 2000 begins with
// "2", the day (or the year) first; else "Check". It is the name of the folder of cheque templates
// too. Errors are ignored.
void SetChequeWord(Session& session);

}  // namespace tenora
