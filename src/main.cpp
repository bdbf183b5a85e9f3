// The process: makes the parts the program stands on, hands them down and starts Main.
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>
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
#include "startup/generate_command.h"
#include "startup/own_commands.h"

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::unique_ptr<tenora::printing::Printers> MakePrinters() {
  return tenora::printing::Printers::Create(
      {.default_printer = Environment("TENORA_PRINTER"), .pdf_target = Environment("TENORA_PDF")});
}

// The rooms above the platform, made from what this process finds in the machine.
template <typename Use>
int WithPlatform(Use&& use) {
  using namespace tenora;
  const Clock clock = Clock::FromEnvironment();
  ConsoleDialogs dialogs(std::cin, std::cerr);
  const auto locale = MakeLocale();
  const auto registry = registry::Registry::FromEnvironment();
  const auto workspace = query::Workspace::Create([&clock] { return clock.Now(); });
  return use(Platform{clock, dialogs, *locale, *registry, *workspace, ProgramFolder()});
}

int RunMain(const std::vector<std::string>& arguments) {
  using namespace tenora;
  return WithPlatform([&](const Platform& platform) {
    Session session(platform);
    const CommandLine line = CommandLine::FromArguments(arguments);
    return Main(CommandParts{line, session, MakePrinters, std::cout});
  });
}

int RunGenerateCommand(const std::vector<std::string>& arguments) {
  using namespace tenora;
  return WithPlatform([&](const Platform& platform) {
    return RunGenerate(arguments, GenerateParts{platform, MakePrinters, std::cout, std::cerr,
                                                ::isatty(STDERR_FILENO) == 1});
  });
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (!arguments.empty() && arguments[0] == "generate") return RunGenerateCommand(arguments);
    if (!arguments.empty() && tenora::IsOwnCommand(arguments[0])) {
      return tenora::RunOwnCommand(arguments, std::cout, std::cerr);
    }
    return RunMain(arguments);
  } catch (...) {
    std::cerr << tenora::TerminalText(tenora::ErrorText(tenora::CurrentError())) << std::endl;
    return 1;
  }
}
