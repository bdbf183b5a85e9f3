// The cheque command: fills a cheque template with payee and amount and prints it.
#pragma once

#include "startup/commands.h"

namespace tenora {

// Reads its parameters from the command line and touches no database. The user always picks the
// printer. True only when the cheque was printed: a cancelled chooser is false too, but no failure
// to be shown.
bool ReceiptCheque(const CommandParts& parts);

}  // namespace tenora
