// A transaction on a server, rolled back unless it is committed.
#pragma once

#include "platform/server/server_connection.h"

namespace tenora::server {

class ServerTransaction {
 public:
  // Begins it. The connection outlives it. Raises ServerError.
  explicit ServerTransaction(Connection& connection) : connection_(connection) {
    connection_.Run("begin");
  }
  ~ServerTransaction();
  ServerTransaction(const ServerTransaction&) = delete;
  ServerTransaction& operator=(const ServerTransaction&) = delete;

  // Raises ServerError: after kLost and kStopped the server has kept all of it or nothing, else
  // nothing.
  void Commit();

 private:
  Connection& connection_;
  bool open_ = true;
};

}  // namespace tenora::server
