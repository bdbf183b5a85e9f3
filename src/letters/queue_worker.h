// A worker: takes letters from the queue on a server, makes them and hands them over, until it is
// told to stop. Many may do so, on many machines.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "data/program.h"
#include "platform/printing/printing.h"

namespace tenora {

struct WorkerOptions {
  std::string service;                // of libpq
  std::vector<std::string> branches;  // by name; none: all that the login sees
  std::filesystem::path data_folder;  // in which each branch's letters have a folder
  // How long letters are in hand without a word of theirs. A message to a mail server may take
  // minutes.
  std::chrono::seconds lease{300};
  std::size_t together = 32;  // letters taken at once
  // Ends when no letter is ready, in anybody's hand, or to be tried again.
  bool until_done = false;
};

struct WorkerParts {
  const Platform& platform;
  // Called only when something is printed.
  std::function<std::unique_ptr<printing::Printers>()> make_printers;
  // Told what somebody should know, a line each.
  std::function<void(const std::string& line)> tell;
  // True ends the work after the letter in hand.
  std::function<bool()> stop_asked;
};

// Returns after a stop, or with `until_done` when nothing is left. A server that cannot be reached
// is waited for. Raises server::ServerError where the server refuses: a login that is no worker, a
// database without a queue.
void WorkOnQueue(const WorkerParts& parts, const WorkerOptions& options);

}  // namespace tenora
