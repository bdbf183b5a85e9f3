// How both print commands print: one letter, one job.
#pragma once

#include "letters/frm_letter.h"
#include "startup/commands.h"

namespace tenora {

// Prints the letter, on a printer that the user picks first where `choose_printer` is set, and
// writes the receipt "Printed: path" to the output where a file was made. False when nothing was
// printed: the chooser was cancelled, or a failure that has been shown, under `label` where no
// printer is installed.
bool PrintOneLetter(const CommandParts& parts, frmLetter& letter, bool choose_printer,
                    const char* label);

}  // namespace tenora
