// Several processes of this program, each a worker: one that is killed does not take the others
// with it, and is replaced.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace tenora {

// Starts as many processes with these arguments, and waits for them to end; after a stop they are
// told to end after the letter in hand. One that a signal has ended is started anew. The result is
// the highest of their exit statuses. Raises 57 (Device I/O error) where one cannot be started.
int RunProcesses(unsigned count, const std::vector<std::string>& arguments,
                 const std::function<bool()>& stop_asked, std::ostream& errors);

// In one of these processes: asks the system to tell it to stop when the process with this number,
// which has started it, ends.
void EndWith(int parent);

}  // namespace tenora
