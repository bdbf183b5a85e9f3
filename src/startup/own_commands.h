// The program's own command-line words, for scripts and technicians: query, tables, --help and
// --version, and those that the installed completion and manual page are made with. The management
// package's command words are handled in dispatch.h.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

bool IsOwnCommand(std::string_view first_argument);

// Runs one of them; `arguments` are without the program's name. Results go to `output`, errors as
// "number - description" to `errors`. The result is the exit status: 0 done, 1 failed, 2 a usage
// error.
int RunOwnCommand(std::vector<std::string> arguments, std::ostream& output, std::ostream& errors);

}  // namespace tenora
