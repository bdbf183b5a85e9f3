// The interactive program: Qt's application, the boxes as windows, splash and main window.
#pragma once

#include <memory>
#include <string>

#include "platform/dialogs/dialogs.h"
#include "startup/commands.h"

namespace tenora {

class Desktop {
 public:
  // Why no window can be shown, in words for whoever started the program; empty where one can.
  static std::string DisplayProblem();

  // Call where DisplayProblem is empty, once in a process. A display that turns out not to answer
  // ends the process with a message and status 1.
  Desktop(int& argc, char** argv);
  ~Desktop();
  // For boxes alone. Null where there is no display, or it does not answer.
  static std::unique_ptr<Desktop> ForBoxes(int& argc, char** argv);
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // May be asked from any thread.
  Dialogs& dialogs();

  // The splash, where the command line is empty; then the main window until it is closed. The
  // result is the exit status.
  int Run(const CommandParts& parts);

 private:
  struct State;
  explicit Desktop(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace tenora
