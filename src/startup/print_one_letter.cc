#include "startup/print_one_letter.h"

#include <ostream>
#include <string>
#include <vector>

#include "letters/letter_check.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/dialogs/terminal_text.h"

namespace tenora {

bool MayLeave(const CommandParts& parts, const frmLetter& letter, const Recipient& recipient,
              const char* noun, const char* label) {
  std::string reasons;
  const std::vector<LetterFinding> findings = letter.Check();
  for (const LetterFinding& finding : findings) {
    const std::string text = FindingText(recipient, finding);
    if (finding.weight == FindingWeight::kHold) {
      reasons += text + ".\r\n";
    } else {
      parts.errors << TerminalLine("Warning: " + text + ".") << std::endl;
    }
  }
  if (!Holds(findings)) return true;
  return parts.session.platform.dialogs.Show(
             {.text = "This " + std::string(noun) + " is not as it should be:\r\n\r\n" + reasons +
                      "\r\nUse it anyway? Otherwise nothing is printed or sent.",
              .title = label,
              .buttons = Buttons::kYesNo,
              .icon = Icon::kExclamation,
              .default_answer = Answer::kNo}) == Answer::kYes;
}

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
