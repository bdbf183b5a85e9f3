// What the two print commands work with.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>

#include "platform/printing/printing.h"
#include "rental/session.h"
#include "startup/command_line.h"

namespace tenora {

struct CommandParts {
  const CommandLine& command_line;
  Session& session;
  // Called only when something is printed: the printing system takes time to start.
  std::function<std::unique_ptr<printing::Printers>()> make_printers;
  // Results, one a line: "Printed: /home/office/Receipt.pdf".
  std::ostream& output;
};

}  // namespace tenora
