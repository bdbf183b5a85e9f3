// `tenora server`: what an administrator does with the branches on a server.
#pragma once

#include <iosfwd>

#include "startup/server_call.h"

namespace tenora {

// Runs the command of the call, results on `output`. True when all was done and no finding is to be
// told; a branch that fails is told on `errors` and does not stop the others. Raises ServerError.
bool RunServerCommand(const ServerCall& call, std::ostream& output, std::ostream& errors);

}  // namespace tenora
