#include "platform/server/server_transaction.h"

namespace tenora::server {

ServerTransaction::~ServerTransaction() {
  if (!open_ || connection_.IsBroken()) return;
  try {
    connection_.Run("rollback");
  } catch (const ServerError&) {
    // The server rolls back by itself when the connection ends.
  }
}

void ServerTransaction::Commit() {
  open_ = false;
  connection_.Run("commit");
}

}  // namespace tenora::server
