#include "startup/general.h"

#include "platform/dialogs/dialogs.h"
#include "startup/cheque_print.h"
#include "startup/cheque_word.h"
#include "startup/receipt_print.h"

namespace tenora {

int Main(const CommandParts& parts) {
  Dialogs& dialogs = parts.session.platform.dialogs;
  if (parts.command_line.Contains("PRINTRECEIPT")) return ReceiptPrint(parts) ? 0 : 1;
  if (parts.command_line.Contains("PRINTCHEQUE")) {
    SetChequeWord(parts.session);
    return ReceiptCheque(parts) ? 0 : 1;
  }
  dialogs.Say(
      "The windows of this program are not available in this version.\r\n"
      "\"tenora --help\" shows what can be done from the command line.");
  return 1;
}

}  // namespace tenora
