// The session of a command of our own that reads the agency's data folder: its messages go to
// standard error, and it asks nothing.
#pragma once

#include <memory>
#include <ostream>
#include <sstream>

#include "data/program.h"
#include "platform/dialogs/console_dialogs.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/registry/registry.h"
#include "platform/runtime/clock.h"
#include "rental/session.h"

namespace tenora {

class CommandSession {
 public:
  explicit CommandSession(std::ostream& errors) : dialogs_(no_input_, errors) {
    session_.database.SetCommandMode();
  }

  Session& session() { return session_; }
  const Clock& clock() const { return clock_; }
  query::Workspace& workspace() { return *workspace_; }

 private:
  const Clock clock_ = Clock::FromEnvironment();
  std::istringstream no_input_;
  ConsoleDialogs dialogs_;
  const std::unique_ptr<Locale> locale_ = MakeLocale();
  const std::unique_ptr<registry::Registry> registry_ = registry::Registry::FromEnvironment();
  const std::unique_ptr<query::Workspace> workspace_ = query::Workspace::Create();
  Session session_{Platform{clock_, dialogs_, *locale_, *registry_, *workspace_, ProgramFolder(),
                            StateFolder()}};
};

}  // namespace tenora
