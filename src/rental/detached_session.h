// A session for threads beside the windows': over the database file of another session, with an
// engine and caches of its own, and without boxes. The two share only what does not change: clock,
// locale and folders; a registry is never asked. Nothing is changed. What it keeps of the file in
// memory, it keeps twice.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rental/session.h"

namespace tenora {

class DetachedSession {
 public:
  // Called on the thread of `session`, whose platform outlives this. Raises what
  // Database::Location raises.
  explicit DetachedSession(Session& session);
  ~DetachedSession();

  // While the result lives, all else here is this thread's; other threads wait for it.
  [[nodiscard]] std::unique_lock<std::mutex> Take();
  // The same, or nothing while another thread has it.
  [[nodiscard]] std::unique_lock<std::mutex> TryTake();

  Session& session();
  // The file; after the settings name another, a new detached session is needed.
  const std::filesystem::path& file() const;
  // Its platform with other boxes, for a further session on the same thread over the tables that
  // are in memory here.
  Platform PlatformWith(Dialogs& dialogs) const;
  // What would have been shown since this was asked last.
  std::vector<std::string> TakeMessages();

  // Whether the caches and options are those of the file as it is now.
  bool IsFresh() const;
  // Loads them where they are not, and forgets what else was kept of the file. Returns what is
  // wrong with it, in one line; empty where it could be read.
  std::string Refresh();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tenora
