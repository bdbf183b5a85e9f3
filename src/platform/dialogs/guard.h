// The error convention: an unexpected error is shown as number, " - " and description
// in an OK-only box titled with the procedure's label ("frmMain - cmdGenerate_Click").
#pragma once

#include <string>
#include <utility>

#include "platform/dialogs/dialogs.h"
#include "platform/runtime/error.h"

namespace tenora {

// Shows an error in the system's one form.
inline void ShowError(Dialogs& dialogs, const std::string& label, const RuntimeError& error) {
  dialogs.Say(ErrorText(error), label);
}

// Runs a procedure body. After an error the box is shown, the body is abandoned and the result is
// false. Cancellation shows no message.
template <typename Body>
bool Guarded(Dialogs& dialogs, const std::string& label, Body&& body) {
  try {
    std::forward<Body>(body)();
    return true;
  } catch (...) {
    const RuntimeError error = CurrentError();
    if (error.number() != error_number::kCancelled) ShowError(dialogs, label, error);
    return false;
  }
}

// The loaders' rule: a failing statement is shown, then execution resumes with the next one. Each
// statement is one call: `step([&] { record.Bond = ToDouble(row.Field("bond")); });`
class ResumeNext {
 public:
  ResumeNext(Dialogs& dialogs, std::string label) : dialogs_(dialogs), label_(std::move(label)) {}

  template <typename Statement>
  void operator()(Statement&& statement) {
    Guarded(dialogs_, label_, std::forward<Statement>(statement));
  }

 private:
  Dialogs& dialogs_;
  std::string label_;
};

}  // namespace tenora
