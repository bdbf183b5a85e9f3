#include "platform/access/database_writer.h"

#include <map>

#include "platform/access/write/table_editor.h"

namespace tenora::access {
namespace {

constexpr std::chrono::milliseconds kRecoveryWait{10000};

class OpenTransaction final : public WriteTransaction {
 public:
  OpenTransaction(const std::filesystem::path& path, const Options& options)
      : access_(options.storage == nullptr ? disk_ : *options.storage, path, options.wait_for_lock),
        pages_(std::make_shared<ChangedPages>(access_.path(), access_.database())),
        context_(Writable(pages_)) {}

  bool HasTable(std::string_view name) const override {
    const CatalogueEntry* const entry = context_.catalogue().Find(name);
    return entry != nullptr && !entry->system;
  }

  WritableTable& Table(std::string_view name) override {
    const auto data = context_.Load(name);
    if (data == nullptr) {
      RefuseOthers(name);
      throw RuntimeError(engine_error::kNoSuchTable,
                         "The database engine cannot find the input table or query '" +
                             std::string(name) + "' in '" + access_.path().string() + "'.",
                         "DAO.Database");
    }
    if (context_.IsSystemTable(name)) {
      throw RuntimeError(engine_error::kNotUpdatable,
                         "Operation must use an updateable query. Table '" + std::string(name) +
                             "' is a system table.",
                         "DAO.Database");
    }
    std::unique_ptr<TableEditor>& table = tables_[data->definition.page];
    if (table == nullptr) table = std::make_unique<TableEditor>(context_, data);
    return *table;
  }

  CommitStates Commit() override {
    if (context_.spoiled) {
      throw RuntimeError(engine_error::kNotUpdatable,
                         "Operation must use an updateable query. A change to '" +
                             access_.path().string() +
                             "' failed half way; the transaction was not written.",
                         "DAO.Database");
    }
    // Whether or not this succeeds, these pages must not be written again.
    context_.spoiled = true;
    std::map<std::uint32_t, std::string> names;
    for (const auto& [page, table] : tables_) names[page] = table->name();
    return pages_->Commit(access_, std::move(names));
  }

 private:
  // Refuses names that stand for something else than a table of this file.
  void RefuseOthers(std::string_view name) const {
    if (context_.catalogue().FindQuery(name) != nullptr) {
      throw RuntimeError(engine_error::kNotUpdatable,
                         "Operation must use an updateable query. '" + std::string(name) +
                             "' is a saved query: change the table that it selects from.",
                         "DAO.Database");
    }
    if (const LinkedTable* const link = context_.catalogue().FindLink(name)) {
      const std::string where = link->database.empty() ? "a server" : "'" + link->database + "'";
      throw RuntimeError(engine_error::kNotUpdatable,
                         "Operation must use an updateable query. '" + std::string(name) +
                             "' is linked to table '" + link->source + "' of " + where +
                             ": change it there.",
                         "DAO.Database");
    }
  }

  static std::shared_ptr<ChangedPages> Writable(std::shared_ptr<ChangedPages> pages) {
    if (pages->header().format != Format::kJet3) return pages;
    throw RuntimeError(
        engine_error::kReadOnly,
        "Cannot update. Database or object is read-only. '" + pages->path().string() +
            "' is in the Access 97 format, which is read-only here; convert it to a newer one.",
        "DAO.Database");
  }

  DiskStorage disk_;
  ExclusiveAccess access_;
  std::shared_ptr<ChangedPages> pages_;
  WriteContext context_;
  std::map<std::uint32_t, std::unique_ptr<TableEditor>> tables_;
};

class HeldReadLock final : public ReadLock {
 public:
  explicit HeldReadLock(std::unique_ptr<StorageFile> file) : file_(std::move(file)) {}

 private:
  std::unique_ptr<StorageFile> file_;
};

}  // namespace

std::unique_ptr<WriteTransaction> WriteTransaction::Begin(const std::filesystem::path& path,
                                                          const Options& options) {
  return std::make_unique<OpenTransaction>(path, options);
}

std::unique_ptr<ReadLock> ReadLock::Take(const std::filesystem::path& path,
                                         std::chrono::milliseconds wait) {
  DiskStorage disk;
  for (bool recovered = false;; recovered = true) {
    auto file = LockForReading(disk, path, wait);
    // A writer still running would hold its own lock, so this journal is a crashed writer's. One
    // that is still there afterwards could not be removed.
    if (!HasJournal(disk, path) || (recovered && HasUnneededJournal(disk, *file, path)))
      return std::make_unique<HeldReadLock>(std::move(file));
    file.reset();
    RecoverDatabase(disk, path, wait);
  }
}

std::unique_ptr<ReadLock> ReadLock::TakeWherePossible(const std::filesystem::path& path,
                                                      std::chrono::milliseconds wait) {
  try {
    return Take(path, wait);
  } catch (const RuntimeError& error) {
    if (error.number() == engine_error::kCannotLock) return nullptr;
    throw;
  }
}

void RecoverDatabase(const std::filesystem::path& path) {
  DiskStorage disk;
  RecoverDatabase(disk, path, kRecoveryWait);
}

}  // namespace tenora::access
