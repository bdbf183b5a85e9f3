// The process-wide services that main makes, and the program folder.
#pragma once

#include <filesystem>

namespace tenora {

// The program folder, without a trailing separator: TENORA_HOME, else the executable's folder where
// that holds property.mdb, else the user's data folder for Tenora (~/.local/share/Tenora).
std::filesystem::path ProgramFolder();

class Clock;
class Dialogs;
class Locale;
namespace registry {
class Registry;
}
namespace query {
class Workspace;
}
namespace printing {
class Printers;
}

// The services that main makes and hands down; all outlive the session.
struct Platform {
  const Clock& clock;
  Dialogs& dialogs;
  const Locale& locale;
  registry::Registry& registry;
  query::Workspace& workspace;
  std::filesystem::path program_folder;
};

}  // namespace tenora
