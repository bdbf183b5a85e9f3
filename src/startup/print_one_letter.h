// How both print commands let a letter leave: checked, and one letter a job.
#pragma once

#include "letters/frm_letter.h"
#include "letters/recipients.h"
#include "startup/commands.h"

namespace tenora {

// Whether a merged letter, which `noun` names ("receipt"), may leave. Warnings are told and wait
// for nobody; what holds the letter asks whoever is there, in a box titled `label`. Nobody there is
// a No.
bool MayLeave(const CommandParts& parts, const frmLetter& letter, const Recipient& recipient,
              const char* noun, const char* label);

// Prints the letter, on a printer that the user picks first where `choose_printer` is set, and
// writes the receipt "Printed: path" to the output where a file was made. False when nothing was
// printed: the chooser was cancelled, or a failure that has been shown, under `label` where no
// printer is installed.
bool PrintOneLetter(const CommandParts& parts, frmLetter& letter, bool choose_printer,
                    const char* label);

}  // namespace tenora
