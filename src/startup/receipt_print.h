// The receipt command: builds one receipt letter from a template, prints it and keeps a copy.
#pragma once

#include "startup/commands.h"

namespace tenora {

// Reads its parameters from the command line. Every failure is shown; true only when everything
// asked for was done. A letter that could not be filled (an unknown tenant code, a database error,
// a building receipt number that cannot be issued) is neither printed nor saved.
bool ReceiptPrint(const CommandParts& parts);

}  // namespace tenora
