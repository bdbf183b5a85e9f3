#include <algorithm>
#include <unordered_map>

#include "platform/query/engine.h"
#include "platform/query/mirror.h"
#include "platform/query/recordset.h"
#include "platform/runtime/clock.h"

namespace tenora::query {
namespace {

class MirrorDatabase : public Database {
 public:
  MirrorDatabase(std::string name, std::shared_ptr<Mirror> mirror)
      : name_(std::move(name)), mirror_(std::move(mirror)) {}

  const std::string& Name() const override { return name_; }

  std::unique_ptr<Recordset> OpenRecordset(std::string_view sql, int, int) override {
    return std::make_unique<MirrorRecordset>(mirror_, sql);
  }

  std::vector<TableSummary> Tables() const override {
    std::vector<TableSummary> summaries;
    for (const std::string& name : mirror_->file().TableNames()) {
      const access::Table* const table = mirror_->file().FindTable(name);
      summaries.push_back({.name = name, .rows = table == nullptr ? 0 : table->row_count()});
    }
    return summaries;
  }

 private:
  std::string name_;
  std::shared_ptr<Mirror> mirror_;
};

class MirrorWorkspace : public Workspace {
 public:
  explicit MirrorWorkspace(MirrorSettings settings) : settings_(std::move(settings)) {}

  std::unique_ptr<Database> OpenDatabase(const std::filesystem::path& path) override {
    const std::filesystem::path full = std::filesystem::absolute(path).lexically_normal();
    const FileState state = ReadFileState(full);
    if (const auto known = mirrors_.find(full.string()); known != mirrors_.end()) {
      if (known->second->state() == state)
        return std::make_unique<MirrorDatabase>(full.string(), known->second);
      mirrors_.erase(known);
    }
    auto mirror = std::make_shared<Mirror>(full, state, settings_);
    // Few programs open more than one database; a mirror too many only costs reading it again.
    constexpr std::size_t kMostMirrors = 4;
    if (mirrors_.size() >= kMostMirrors) mirrors_.clear();
    mirrors_.emplace(full.string(), mirror);
    return std::make_unique<MirrorDatabase>(full.string(), std::move(mirror));
  }

 private:
  MirrorSettings settings_;
  std::unordered_map<std::string, std::shared_ptr<Mirror>> mirrors_;
};

}  // namespace

std::unique_ptr<Workspace> Workspace::Create(std::function<Date()> now,
                                             std::chrono::milliseconds time_limit) {
  if (!now) now = [] { return Clock().Now(); };
  return std::make_unique<MirrorWorkspace>(
      MirrorSettings{.now = std::move(now), .time_limit = time_limit});
}

}  // namespace tenora::query
