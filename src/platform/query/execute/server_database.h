// A branch on a server, opened: it is read with the engine's statements, and never changed.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/query/engine.h"
#include "platform/query/execute/server_connections.h"

namespace tenora::query {

class ServerDatabase : public EngineDatabase, private NumberServer {
 public:
  ServerDatabase(server::BranchLocation location, ServerConnection open)
      : name_(location.ToText()), location_(std::move(location)), open_(std::move(open)) {}

  const std::string& Name() const override { return name_; }
  std::optional<BranchOrigin> Origin() const override;
  std::unique_ptr<Recordset> OpenRecordset(std::string_view sql, int type, int options) override;
  TextMatch Texts() const override { return TextMatch(open_.connection->collation()); }
  std::vector<TableSummary> Tables() const override;
  // Raise 3027: the branch's file is where changes are made.
  std::int64_t Execute(std::string_view sql) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void Rollback() override;
  NumberServer* Numbers() override { return this; }

 private:
  bool Issues() override { return open_.branch->numbers().IssuedHere(); }
  bool MayTake() override { return open_.branch->numbers().MayTake(); }
  std::optional<std::int64_t> Last(std::string_view series) override {
    return open_.branch->numbers().Last(series);
  }
  std::int64_t Issue(std::string_view series) override {
    return open_.branch->numbers().Issue(series);
  }
  [[noreturn]] void ThrowReadOnly() const;

  std::string name_;
  server::BranchLocation location_;
  ServerConnection open_;
};

}  // namespace tenora::query
