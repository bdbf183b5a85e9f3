// A transaction in which nobody else changes a branch's rows.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/server/server_connection.h"
#include "platform/server/server_transaction.h"

namespace tenora::server {

// All functions raise ServerError. Rolled back unless it is committed.
class ImportTransaction {
 public:
  explicit ImportTransaction(Connection& connection);

  // Returns the branch's number. Where another has locked it, waits this long, then raises 3146
  // with who that is; also for a branch that the login does not see.
  std::int64_t Lock(const std::string& branch, std::chrono::milliseconds wait);
  void Commit() { transaction_.Commit(); }

 private:
  Connection& connection_;
  ServerTransaction transaction_;
};

inline constexpr std::chrono::seconds kWaitForImport{10};

}  // namespace tenora::server
