// `tenora generate`: letters for many recipients from the command line.
#pragma once

#include <string>
#include <vector>

#include "startup/generate_parts.h"

namespace tenora {

// `arguments` begin with "generate". The result is the exit status: 0 when every letter was made
// and handed over, 1 when not, 2 for a wrong call.
int RunGenerate(std::vector<std::string> arguments, const GenerateParts& parts);

}  // namespace tenora
