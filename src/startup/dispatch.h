// Decides which command a command line asks for and runs it: the entry of the program after main().
#pragma once

#include "startup/commands.h"

namespace tenora {

// Whether this line starts the windows: one without a command word.
bool IsInteractive(const CommandLine& line);

// Runs the command word that the line holds, in any letter case and anywhere; the receipt command
// goes before the cheque command. The result is the exit status: 0 only when what was asked was
// done, else 1. Without a command word the windows are started.
int Main(const CommandParts& parts);

}  // namespace tenora
