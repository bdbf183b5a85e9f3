#include "ui/window/command_dialogs.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tenora {
namespace {

// A program started by a desktop or the management package has /dev/null as standard input, or an
// open pipe without data.
bool IsAnsweredInText() {
  if (::isatty(STDIN_FILENO) == 1 || ::isatty(STDERR_FILENO) == 1) return true;
  struct stat input {};
  if (::fstat(STDIN_FILENO, &input) != 0) return false;
  if (S_ISREG(input.st_mode)) return true;
  if (!S_ISFIFO(input.st_mode) && !S_ISSOCK(input.st_mode)) return false;
  pollfd waiting{STDIN_FILENO, POLLIN, 0};
  return ::poll(&waiting, 1, 0) > 0;
}

}  // namespace

Dialogs& CommandDialogs::Decide() {
  if (decided_ != nullptr) return *decided_;
  if (!IsAnsweredInText()) desktop_ = Desktop::ForBoxes(argc_, argv_);
  decided_ = desktop_ != nullptr ? &desktop_->dialogs() : &text_;
  return *decided_;
}

}  // namespace tenora
