// The connections to branches on servers that were opened so far, each with its tables as long as
// no sync has brought another state.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/query/cache/server_tables.h"
#include "platform/query/execute/sqlite_connection.h"
#include "platform/server/branch.h"

namespace tenora::query {

struct ServerConnection {
  std::shared_ptr<server::Branch> branch;
  std::shared_ptr<ServerTables> tables;
  std::shared_ptr<SqliteConnection> connection;
};

class ServerConnections {
 public:
  explicit ServerConnections(ConnectionSettings settings) : settings_(std::move(settings)) {}

  // A connection to the branch in its present state, or that of a moment ago. Raises ServerError.
  ServerConnection Get(const server::BranchLocation& location);
  // Fetches ahead, in one round trip, the rows of these codes. Raises ServerError.
  void Expect(const server::BranchLocation& location, std::vector<std::string> codes);
  // As Workspace::OnWaiting, for all connections.
  void OnWaiting(std::function<bool()> stop_asked) { *stop_asked_ = std::move(stop_asked); }

 private:
  struct Entry {
    ServerConnection open;
    std::chrono::steady_clock::time_point checked;  // when its state was the present one
  };

  void OpenAnew(Entry& entry, const server::BranchLocation& location);
  void TakeState(Entry& entry);

  ConnectionSettings settings_;
  // An open database's connection may outlive this.
  std::shared_ptr<std::function<bool()>> stop_asked_ = std::make_shared<std::function<bool()>>();
  std::unordered_map<std::string, Entry> entries_;  // by location
};

}  // namespace tenora::query
