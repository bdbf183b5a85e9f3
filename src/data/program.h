// The process-wide services that main makes, and the program folder.
#pragma once

#include <filesystem>

namespace tenora {

// The program folder, without a trailing separator: TENORA_HOME, else the executable's folder where
// that holds property.mdb, else the user's data folder for Tenora (~/.local/share/Tenora).
std::filesystem::path ProgramFolder();
// Makes the last of these where it is the program folder. A folder that somebody named is never
// made: it may be on a server that is not connected. Raises nothing.
void MakeOwnProgramFolder();

// The folder for what a run leaves to the next one of the same user, in no folder that users share:
// XDG_STATE_HOME, else ~/.local/state.
std::filesystem::path StateFolder();

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
  std::filesystem::path state_folder;
};

}  // namespace tenora
