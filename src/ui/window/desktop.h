// The interactive program: Qt's application, the boxes as windows, splash and main window.
#pragma once

#include <memory>
#include <string>

#include "platform/dialogs/dialogs.h"
#include "startup/commands.h"

namespace tenora {

class Desktop {
 public:
  // Why no window can be shown, as a message to the user; empty if windows can be shown.
  static std::string DisplayProblem();

  // Call once per process, and only if DisplayProblem is empty. If the display then does not
  // respond, the process ends with a message and status 1.
  Desktop(int& argc, char** argv);
  ~Desktop();
  // For message boxes only. Null if there is no display or it does not respond.
  static std::unique_ptr<Desktop> ForBoxes(int& argc, char** argv);
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // May be called from any thread.
  Dialogs& dialogs();

  // Shows the splash if the command line is empty, then the main window until it is closed. Returns
  // the exit status.
  int Run(const CommandParts& parts);

 private:
  struct State;
  explicit Desktop(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace tenora
