#include "platform/query/execute/server_connections.h"

#include "platform/access/engine_error.h"

namespace tenora::query {
namespace {

using Clock = std::chrono::steady_clock;

// A letter opens the database several times; asking the server each time would be most of its cost.
constexpr std::chrono::seconds kFresh{2};

}  // namespace

void ServerConnections::TakeState(Entry& entry) {
  std::vector<std::string> expected;
  if (entry.open.tables != nullptr) expected = entry.open.tables->expected();
  entry.open.tables = std::make_shared<ServerTables>(entry.open.branch, std::move(expected));
  entry.open.connection = std::make_shared<SqliteConnection>(
      entry.open.tables, Collation::Of(entry.open.branch->sort_order()), settings_);
}

void ServerConnections::OpenAnew(Entry& entry, const server::BranchLocation& location) {
  // Whatever becomes of this one, the broken connection is of no use.
  entry.open.branch.reset();
  entry.open.branch = server::Branch::Open(
      location, {.stop_asked = [asked = stop_asked_] { return *asked && (*asked)(); }});
  TakeState(entry);
}

ServerConnection ServerConnections::Get(const server::BranchLocation& location) {
  Entry& entry = entries_[location.ToText()];
  const bool usable = entry.open.branch != nullptr && !entry.open.branch->connection().IsBroken();
  if (!usable) {
    OpenAnew(entry, location);
  } else if (entry.open.branch->outdated() || Clock::now() - entry.checked > kFresh) {
    try {
      if (entry.open.branch->Refresh()) TakeState(entry);
    } catch (const server::ServerError&) {
      // The server may have been restarted since.
      if (!entry.open.branch->connection().IsBroken()) throw;
      OpenAnew(entry, location);
    }
  }
  entry.checked = Clock::now();
  return entry.open;
}

void ServerConnections::Expect(const server::BranchLocation& location,
                               std::vector<std::string> codes) {
  const ServerConnection open = Get(location);
  try {
    open.tables->Expect(codes);
  } catch (const RuntimeError& error) {
    if (error.number() != access::engine_error::kChangedByAnother) throw;
    Get(location).tables->Expect(std::move(codes));
  }
}

}  // namespace tenora::query
