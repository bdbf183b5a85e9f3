#include <algorithm>
#include <set>
#include <unordered_map>

#include "platform/query/engine.h"
#include "platform/query/errors.h"
#include "platform/query/mirror.h"
#include "platform/query/recordset.h"
#include "platform/query/transaction.h"
#include "platform/runtime/clock.h"

namespace tenora::query {
namespace {

// The mirrors of the files opened so far, each as long as its file is unchanged, and its tables
// beyond that where we know what has changed: a commit of our own that found the file in the state
// they were read from leaves those it did not touch as they are.
class Mirrors {
 public:
  explicit Mirrors(MirrorSettings settings) : settings_(std::move(settings)) {}

  std::shared_ptr<Mirror> Get(const std::filesystem::path& path) {
    const access::FileState state = access::ReadFileState(path);
    // Few programs open more than one database; a mirror too many only costs reading it again.
    constexpr std::size_t kMostMirrors = 4;
    const std::string key = path.string();
    if (mirrors_.size() >= kMostMirrors && !mirrors_.contains(key)) mirrors_.clear();
    Entry& entry = mirrors_[key];
    LoadedTables kept;
    if (entry.mirror != nullptr && entry.settled && entry.state == state) {
      if (entry.changed.empty()) return entry.mirror;
      kept = entry.mirror->LoadedExcept(entry.changed);
    }
    entry.mirror = nullptr;
    auto mirror = std::make_shared<Mirror>(path, state, settings_, std::move(kept));
    entry = {.mirror = mirror,
             .state = state,
             .settled = access::IsSettled(state) || state == entry.committed,
             .changed = {},
             .committed = entry.committed};
    return mirror;
  }

  // Takes note of a commit of our own, which changed these tables.
  void Follow(const std::filesystem::path& path, const access::CommitStates& states,
              const std::set<std::string>& changed) {
    Entry& entry = mirrors_[path.string()];
    const bool known = states.before != access::FileState() && states.after != access::FileState();
    if (!known || !entry.settled || entry.state != states.before) entry.mirror = nullptr;
    entry.state = states.after;
    entry.committed = states.after;
    entry.changed.insert(changed.begin(), changed.end());
  }

  // A mirror read while this process itself keeps other writers out.
  std::shared_ptr<Mirror> ReadWithinTransaction(const std::filesystem::path& path) const {
    MirrorSettings settings = settings_;
    settings.take_read_lock = false;
    return std::make_shared<Mirror>(path, access::ReadFileState(path), settings);
  }

  void Forget(const std::filesystem::path& path) { mirrors_.erase(path.string()); }

 private:
  struct Entry {
    std::shared_ptr<Mirror> mirror;  // null for none of use
    access::FileState state;         // in which the file holds what the mirror does, but for
    bool settled = false;            // what `changed` names
    std::set<std::string> changed;
    access::FileState committed;  // by our own last commit: no other change shows its time
  };

  MirrorSettings settings_;
  std::unordered_map<std::string, Entry> mirrors_;
};

class MirrorDatabase : public Database {
 public:
  MirrorDatabase(std::filesystem::path path, std::shared_ptr<Mirrors> mirrors)
      : path_(std::move(path)),
        name_(path_.string()),
        mirrors_(std::move(mirrors)),
        mirror_(mirrors_->Get(path_)) {}

  const std::string& Name() const override { return name_; }

  std::unique_ptr<Recordset> OpenRecordset(std::string_view sql, int, int) override {
    if (transaction_ != nullptr) {
      if (auto rows = transaction_->TrySelect(sql)) return rows;
      return std::make_unique<MirrorRecordset>(MirrorWithinTransaction(), sql);
    }
    if (mirror_ == nullptr) mirror_ = mirrors_->Get(path_);
    return std::make_unique<MirrorRecordset>(mirror_, sql);
  }

  std::vector<TableSummary> Tables() const override {
    const std::shared_ptr<Mirror> mirror = mirror_ != nullptr ? mirror_ : mirrors_->Get(path_);
    std::vector<TableSummary> summaries;
    for (const std::string& name : mirror->file().TableNames()) {
      const access::Table* const table = mirror->file().FindTable(name);
      summaries.push_back({.name = name, .rows = table == nullptr ? 0 : table->row_count()});
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
        std::make_unique<Transaction>(path_, [this] { return MirrorWithinTransaction(); });
  }

  void CommitTrans() override {
    if (transaction_ == nullptr) throw OrderError("You tried to commit without a transaction.");
    const std::unique_ptr<Transaction> ending = EndTransaction();
    if (!ending->changed()) return;
    try {
      mirrors_->Follow(path_, ending->Commit(), ending->changed_tables());
    } catch (...) {
      mirrors_->Forget(path_);
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

  // The mirror follows only after the file: the next statement asks for it anew.
  std::unique_ptr<Transaction> EndTransaction() {
    if (transaction_->changed()) mirror_.reset();
    transaction_mirror_.reset();
    return std::move(transaction_);
  }

  std::shared_ptr<Mirror> MirrorWithinTransaction() {
    if (transaction_mirror_ == nullptr) {
      transaction_mirror_ = mirrors_->ReadWithinTransaction(path_);
    }
    return transaction_mirror_;
  }

  std::filesystem::path path_;
  std::string name_;
  std::shared_ptr<Mirrors> mirrors_;
  std::shared_ptr<Mirror> mirror_;
  std::shared_ptr<Mirror> transaction_mirror_;
  std::unique_ptr<Transaction> transaction_;
};

class MirrorWorkspace : public Workspace {
 public:
  explicit MirrorWorkspace(MirrorSettings settings)
      : mirrors_(std::make_shared<Mirrors>(std::move(settings))) {}

  std::unique_ptr<Database> OpenDatabase(const std::filesystem::path& path) override {
    return std::make_unique<MirrorDatabase>(std::filesystem::absolute(path).lexically_normal(),
                                            mirrors_);
  }

 private:
  std::shared_ptr<Mirrors> mirrors_;
};

}  // namespace

std::unique_ptr<Workspace> Workspace::Create(std::function<Date()> now,
                                             std::chrono::milliseconds time_limit) {
  if (!now) now = [] { return Clock().Now(); };
  return std::make_unique<MirrorWorkspace>(
      MirrorSettings{.now = std::move(now), .time_limit = time_limit});
}

}  // namespace tenora::query
