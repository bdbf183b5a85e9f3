#include "platform/query/engine.h"

#include <algorithm>

#include "platform/query/cache/linked_files.h"
#include "platform/query/execute/connection_cache.h"
#include "platform/query/execute/server_database.h"
#include "platform/query/execute/statement_recordset.h"
#include "platform/query/execute/transaction.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

std::string_view NameOf(access::QueryKind kind) {
  switch (kind) {
    case access::QueryKind::kSelect:
      return "query";
    case access::QueryKind::kMakeTable:
      return "make-table query";
    case access::QueryKind::kAppend:
      return "append query";
    case access::QueryKind::kUpdate:
      return "update query";
    case access::QueryKind::kDelete:
      return "delete query";
    case access::QueryKind::kCrosstab:
      return "crosstab query";
    case access::QueryKind::kDefinition:
      return "data-definition query";
    case access::QueryKind::kPassThrough:
      return "pass-through query";
    case access::QueryKind::kUnion:
      return "union query";
  }
  return "query";
}

class FileDatabase : public EngineDatabase {
 public:
  FileDatabase(std::filesystem::path path, std::shared_ptr<ConnectionCache> connections)
      : path_(std::move(path)),
        name_(path_.string()),
        connections_(std::move(connections)),
        open_(connections_->Get(path_)) {}

  const std::string& Name() const override { return name_; }

  std::unique_ptr<Recordset> OpenRecordset(std::string_view sql, int, int) override {
    constexpr std::string_view kExplain = "explain ";
    if (transaction_ == nullptr && StartsWithNoCase(sql, kExplain)) {
      if (open_.connection == nullptr) open_ = connections_->Get(path_);
      return open_.connection->Explain(sql.substr(kExplain.size()));
    }
    if (transaction_ != nullptr) {
      if (auto rows = transaction_->TrySelect(sql)) return rows;
      return std::make_unique<StatementRecordset>(ConnectionWithinTransaction().connection, sql);
    }
    if (open_.connection == nullptr) open_ = connections_->Get(path_);
    return std::make_unique<StatementRecordset>(open_.connection, sql);
  }

  TextMatch Texts() const override {
    const FileConnection open = open_.connection != nullptr ? open_ : connections_->Get(path_);
    return TextMatch(open.connection->collation());
  }

  std::vector<TableSummary> Tables() const override {
    const FileConnection open = open_.connection != nullptr ? open_ : connections_->Get(path_);
    const access::DatabaseFile& file = open.tables->File();
    std::vector<TableSummary> summaries;
    for (const std::string& name : file.TableNames()) {
      const access::Table* const table = file.FindTable(name);
      summaries.push_back({.name = name, .rows = table == nullptr ? 0 : table->row_count()});
    }
    for (const access::LinkedTable& link : file.LinkedTables()) {
      summaries.push_back({.name = link.name, .kind = DescribeLink(link, path_)});
    }
    for (const access::QuerySummary& query : file.Queries()) {
      summaries.push_back({.name = query.name, .kind = std::string(NameOf(query.kind))});
    }
    return summaries;
  }

  std::int64_t Execute(std::string_view sql) override {
    if (transaction_ != nullptr) return transaction_->Execute(sql);
    BeginTrans();
    try {
      const std::int64_t rows = transaction_->Execute(sql);
      CommitTrans();
      return rows;
    } catch (...) {
      transaction_.reset();
      throw;
    }
  }

  void BeginTrans() override {
    if (transaction_ != nullptr) throw OrderError("A transaction is open already.");
    transaction_ =
        std::make_unique<Transaction>(path_, [this] { return ConnectionWithinTransaction(); });
  }

  void CommitTrans() override {
    if (transaction_ == nullptr) throw OrderError("You tried to commit without a transaction.");
    const std::unique_ptr<Transaction> ending = EndTransaction();
    if (!ending->changed()) return;
    try {
      connections_->Follow(path_, ending->Commit(), ending->changed_tables());
    } catch (...) {
      connections_->Forget(path_);
      throw;
    }
  }

  void Rollback() override {
    if (transaction_ == nullptr) throw OrderError("You tried to roll back without a transaction.");
    EndTransaction();
  }

 private:
  static RuntimeError OrderError(const char* description) {
    return RuntimeError(engine_error::kTransactionOrder, description, "DAO.Workspace");
  }

  // After a change the connection is out of date: the next statement gets a new one.
  std::unique_ptr<Transaction> EndTransaction() {
    if (transaction_->changed()) open_ = {};
    transaction_open_ = {};
    return std::move(transaction_);
  }

  FileConnection ConnectionWithinTransaction() {
    if (transaction_open_.connection == nullptr) {
      transaction_open_ = connections_->ForTransaction(path_);
    }
    return transaction_open_;
  }

  std::filesystem::path path_;
  std::string name_;
  std::shared_ptr<ConnectionCache> connections_;
  FileConnection open_;
  FileConnection transaction_open_;
  std::unique_ptr<Transaction> transaction_;
};

class ConnectionWorkspace : public Workspace {
 public:
  explicit ConnectionWorkspace(ConnectionSettings settings)
      : connections_(std::make_shared<ConnectionCache>(settings)), servers_(std::move(settings)) {}

  std::unique_ptr<EngineDatabase> OpenDatabase(const std::filesystem::path& path) override {
    if (server::IsBranchLocation(path.string())) {
      const server::BranchLocation location = server::ReadBranchLocation(path.string());
      return std::make_unique<ServerDatabase>(location, servers_.Get(location));
    }
    return std::make_unique<FileDatabase>(std::filesystem::absolute(path).lexically_normal(),
                                          connections_);
  }

  void Expect(const std::filesystem::path& path, std::vector<std::string> codes) override {
    if (!server::IsBranchLocation(path.string())) return;
    servers_.Expect(server::ReadBranchLocation(path.string()), std::move(codes));
  }

  void OnWaiting(std::function<bool()> stop_asked) override {
    servers_.OnWaiting(std::move(stop_asked));
  }

 private:
  std::shared_ptr<ConnectionCache> connections_;
  ServerConnections servers_;
};

}  // namespace

std::unique_ptr<Workspace> Workspace::Create(std::function<Date()> now,
                                             std::chrono::milliseconds time_limit,
                                             std::function<std::string(Date)> short_date) {
  if (!now) now = [] { return Clock().Now(); };
  if (!short_date) short_date = [](Date date) { return FormatDate(date, "dd/mm/yyyy"); };
  return std::make_unique<ConnectionWorkspace>(ConnectionSettings{
      .now = std::move(now), .short_date = std::move(short_date), .time_limit = time_limit});
}

}  // namespace tenora::query
