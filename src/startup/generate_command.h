// `tenora generate`: letters for many recipients from the command line.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "data/program.h"
#include "platform/printing/printing.h"

namespace tenora {

struct GenerateParts {
  const Platform& platform;
  // Called only when something is printed.
  std::function<std::unique_ptr<printing::Printers>()> make_printers;
  std::ostream& output;  // the files made, or the list of recipients
  std::ostream& errors;  // progress and problems
  bool output_is_terminal = false, errors_is_terminal = false;
};

// `arguments` begin with "generate". The result is the exit status: 0 when every letter was made
// and handed over, 1 when not, 2 for a usage error.
int RunGenerate(std::vector<std::string> arguments, const GenerateParts& parts);

}  // namespace tenora
