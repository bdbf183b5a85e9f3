#include "startup/print_one_letter.h"

#include <ostream>

#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"

namespace tenora {

bool PrintOneLetter(const CommandParts& parts, frmLetter& letter, bool choose_printer,
                    const char* label) {
  Dialogs& dialogs = parts.session.platform.dialogs;
  const auto printers = parts.make_printers();
  printers->SetDataFolder(parts.session.database.DataFolder());
  PrinterMod printer(*printers, parts.session.settings);
  if (printer.PrinterCount() == 0) {
    dialogs.Say("No printer is installed. Nothing was printed.", label);
    return false;
  }
  if (choose_printer && !printer.ChoosePrinter(dialogs)) return false;
  if (!letter.PrintLetter(printer)) return false;
  return Guarded(dialogs, "frmLetter - PrintLetter", [&] {
    const std::filesystem::path file = printer.EndJob();
    if (!file.empty()) parts.output << "Printed: " << file.string() << std::endl;
  });
}

}  // namespace tenora
