// What the commands, and the windows, are started with.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <vector>

#include "platform/printing/printing.h"
#include "rental/session.h"
#include "startup/command_line.h"

namespace tenora {

struct CommandParts {
  const CommandLine& command_line;
  Session& session;
  // Called only when something is printed: the printing system is slow to start.
  std::function<std::unique_ptr<printing::Printers>()> make_printers;
  // Results, one a line: "Printed: /home/office/Receipt.pdf".
  std::ostream& output;
  // What somebody should know of a letter and nothing waits for, one a line.
  std::ostream& errors;
  // The interactive start: runs until the main window is closed and gives the exit status. Empty
  // where there is no display.
  std::function<int(const CommandParts& parts)> show_main_window = {};
  // What the main window opens first.
  std::vector<std::filesystem::path> files = {};
};

}  // namespace tenora
