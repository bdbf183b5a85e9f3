#include "startup/dispatch.h"

#include "startup/cheque_print.h"
#include "startup/receipt_print.h"

namespace tenora {

bool IsInteractive(const CommandLine& line) {
  return !line.Contains("PRINTRECEIPT") && !line.Contains("PRINTCHEQUE");
}

int Main(const CommandParts& parts) {
  if (parts.command_line.Contains("PRINTRECEIPT")) return ReceiptPrint(parts) ? 0 : 1;
  if (parts.command_line.Contains("PRINTCHEQUE")) {
    parts.session.SetChequeWord();
    return ReceiptCheque(parts) ? 0 : 1;
  }
  return parts.show_main_window ? parts.show_main_window(parts) : 1;
}

}  // namespace tenora
