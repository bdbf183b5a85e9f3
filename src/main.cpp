// The process: makes the parts the program stands on, hands them down and starts Main.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/program.h"
#include "platform/dialogs/console_dialogs.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/locale/locale.h"
#include "platform/printing/printing.h"
#include "platform/query/engine.h"
#include "platform/registry/registry.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "rental/session.h"
#include "startup/command_line.h"
#include "startup/general.h"
#include "startup/own_commands.h"
#include "ui/window/desktop.h"

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::unique_ptr<tenora::printing::Printers> MakePrinters() {
  return tenora::printing::Printers::Create(
      {.default_printer = Environment("TENORA_PRINTER"), .pdf_target = Environment("TENORA_PDF")});
}

// Qt's application is made for the windows only: a print command starts faster without.
std::optional<tenora::Desktop> MakeDesktop(const tenora::CommandLine& line, int& argc,
                                           char** argv) {
  if (!tenora::IsInteractive(line)) return std::nullopt;
  return std::optional<tenora::Desktop>(std::in_place, argc, argv);
}

int RunMain(const std::vector<std::string>& arguments, int& argc, char** argv) {
  using namespace tenora;
  const CommandLine line = CommandLine::FromArguments(arguments);
  const std::string problem = IsInteractive(line) ? Desktop::DisplayProblem() : "";
  if (!problem.empty()) {
    std::cerr << problem << std::endl;
    return 1;
  }
  std::optional<Desktop> desktop = MakeDesktop(line, argc, argv);
  const Clock clock = Clock::FromEnvironment();
  ConsoleDialogs console(std::cin, std::cerr);
  Dialogs& dialogs = desktop ? desktop->dialogs() : console;
  const auto locale = MakeLocale();
  const auto registry = registry::Registry::FromEnvironment();
  const auto workspace = query::Workspace::Create([&clock] { return clock.Now(); });
  Session session(Platform{clock, dialogs, *locale, *registry, *workspace, ProgramFolder()});
  return Main(CommandParts{line, session, MakePrinters, std::cout,
                           [&](const CommandParts& parts) { return desktop->Run(parts); }});
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (!arguments.empty() && tenora::IsOwnCommand(arguments[0])) {
      return tenora::RunOwnCommand(arguments, std::cout, std::cerr);
    }
    return RunMain(arguments, argc, argv);
  } catch (...) {
    std::cerr << tenora::TerminalText(tenora::ErrorText(tenora::CurrentError())) << std::endl;
    return 1;
  }
}
