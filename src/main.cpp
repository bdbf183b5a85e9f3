// The process: makes the process-wide services, hands them down and starts Main.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
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
#include "platform/runtime/pdf_target.h"
#include "platform/runtime/scratch_cleanup.h"
#include "rental/session.h"
#include "startup/command_line.h"
#include "startup/dispatch.h"
#include "startup/generate_command.h"
#include "startup/own_commands.h"
#include "startup/work_command.h"
#include "ui/window/command_dialogs.h"
#include "ui/window/desktop.h"

namespace {

// A standard descriptor that the caller has closed would be reused for the next file that is
// opened, and output would end up in the rental database. Its substitute fails as the closed one
// would.
void KeepStandardDescriptorsTaken() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(fd, F_GETFD) == -1) {
      static_cast<void>(::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

// Only a service's own lines may weaken the encryption of its connection, and libpq would take
// these for as good. To be called before there are threads.
void ForgetWeakerEncryption() {
  for (const char* name : {"PGSSLMODE", "PGREQUIRESSL"}) ::unsetenv(name);
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::unique_ptr<tenora::printing::Printers> MakePrinters() {
  return tenora::printing::Printers::Create({.default_printer = Environment("TENORA_PRINTER"),
                                             .pdf_target = tenora::PdfTargetFromEnvironment()});
}

// Calls `use` with the process-wide services, made from this process's environment.
template <typename Use>
int WithPlatform(tenora::Dialogs& dialogs, Use&& use) {
  using namespace tenora;
  MakeOwnProgramFolder();
  const Clock clock = Clock::FromEnvironment();
  const auto locale = MakeLocale();
  const auto registry = registry::Registry::FromEnvironment();
  const auto workspace =
      query::Workspace::Create([&clock] { return clock.Now(); }, query::kTimeLimit,
                               [&locale](Date date) { return locale->ShortDate(date); });
  return use(
      Platform{clock, dialogs, *locale, *registry, *workspace, ProgramFolder(), StateFolder()});
}

int RunPrintCommand(const tenora::CommandLine& line, int& argc, char** argv) {
  using namespace tenora;
  ConsoleDialogs console(std::cin, std::cerr);
  CommandDialogs dialogs(argc, argv, console);
  const auto make_printers = [&dialogs] {
    dialogs.Decide();
    return MakePrinters();
  };
  return WithPlatform(dialogs, [&](const Platform& platform) {
    Session session(platform);
    return Main(CommandParts{line, session, make_printers, std::cout, std::cerr});
  });
}

int RunWindows(const tenora::CommandLine& line, const std::vector<std::filesystem::path>& files,
               int& argc, char** argv) {
  using namespace tenora;
  const std::string problem = Desktop::DisplayProblem();
  if (!problem.empty()) {
    std::cerr << problem << std::endl;
    return 1;
  }
  Desktop desktop(argc, argv);
  return WithPlatform(desktop.dialogs(), [&](const Platform& platform) {
    Session session(platform);
    const auto run = [&desktop](const CommandParts& parts) { return desktop.Run(parts); };
    return Main(CommandParts{line, session, MakePrinters, std::cout, std::cerr, run, files});
  });
}

// `tenora generate` and `tenora work`.
int RunLetterCommand(const std::vector<std::string>& arguments) {
  using namespace tenora;
  ConsoleDialogs console(std::cin, std::cerr);
  return WithPlatform(console, [&](const Platform& platform) {
    const GenerateParts parts{platform,
                              MakePrinters,
                              std::cout,
                              std::cerr,
                              ::isatty(STDOUT_FILENO) == 1,
                              ::isatty(STDERR_FILENO) == 1};
    return arguments[0] == "work" ? RunWork(arguments, parts) : RunGenerate(arguments, parts);
  });
}

}  // namespace

int main(int argc, char** argv) {
  // Report a file that reaches its size limit, like a full disk, instead of dying of SIGXFSZ.
  std::signal(SIGXFSZ, SIG_IGN);
  KeepStandardDescriptorsTaken();
  ForgetWeakerEncryption();
  tenora::RemoveScratchFilesAtSignals();
  try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (!arguments.empty() && (arguments[0] == "generate" || arguments[0] == "work")) {
      return RunLetterCommand(arguments);
    }
    if (!arguments.empty() && tenora::IsOwnCommand(arguments[0])) {
      return tenora::RunOwnCommand(arguments, std::cout, std::cerr);
    }
    const std::vector<std::filesystem::path> files = tenora::FilesToOpen(arguments);
    const tenora::CommandLine line =
        tenora::CommandLine::FromArguments(files.empty() ? arguments : std::vector<std::string>());
    if (tenora::IsInteractive(line)) {
      const std::filesystem::path folder = tenora::FolderAmong(arguments);
      if (folder.empty()) return RunWindows(line, files, argc, argv);
      std::cerr << tenora::TerminalText(folder.string())
                << " is a folder. Name the letters that are to be opened; for another data folder, "
                   "set TENORA_HOME.\n\"tenora --help\" shows more."
                << std::endl;
      return 2;
    }
    return RunPrintCommand(line, argc, argv);
  } catch (...) {
    std::cerr << tenora::TerminalText(tenora::ErrorText(tenora::CurrentError())) << std::endl;
    return 1;
  }
}
