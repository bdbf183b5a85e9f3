// What `tenora generate` works with.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>

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

}  // namespace tenora
