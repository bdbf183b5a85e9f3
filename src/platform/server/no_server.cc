// In place of server_connection.cc where the program is built without libpq.
#include "platform/server/server_connection.h"

namespace tenora::server {

std::unique_ptr<Connection> Connection::Open(const std::string& service, std::chrono::seconds,
                                             const Waiting&) {
  throw ServerError(server_error::kConnectionFailed,
                    "The service '" + service +
                        "' cannot be reached: this Tenora was built without libpq (Debian: "
                        "libpq-dev), so it knows no servers");
}

}  // namespace tenora::server
