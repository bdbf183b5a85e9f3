// A session for a thread beside the windows': over the database file of another session, with an
// engine and caches of its own, and without boxes. The two share only what does not change: clock,
// locale and folders; a registry is never asked. Nothing is changed. What it keeps of the file in
// memory, it keeps twice.
#pragma once

#include <filesystem>
#include <memory>
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

  // For one thread at a time, any but that of the first session included.
  Session& session();
  // The file; after the settings name another, a new detached session is needed.
  const std::filesystem::path& file() const;
  // What would have been shown since this was asked last.
  std::vector<std::string> TakeMessages();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tenora
