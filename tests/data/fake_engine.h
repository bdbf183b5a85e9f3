// An engine that answers statements from a list, and fails where told to.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/query/engine.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::test {

struct FakeResult {
  std::vector<std::string> fields = {};
  std::vector<std::vector<Value>> rows = {};
  // The first call of these raises this error.
  std::optional<RuntimeError> open_error = {}, move_error = {}, close_error = {}, end_error = {};
};

// What the engine is told and what it was asked; outlives engine, databases and record sets.
struct FakeScript {
  std::map<std::string, FakeResult> results;  // by statement
  std::optional<RuntimeError> open_error;
  std::vector<std::string> opened;  // database paths
  std::vector<std::string> asked;   // statements
  std::vector<std::string> executed;
  std::optional<RuntimeError> execute_error = {};
  int last_type = 0, last_options = 0;
  int closed_sets = 0;
};

class FakeRecordset : public query::Recordset {
 public:
  FakeRecordset(FakeScript& script, FakeResult result)
      : script_(script), result_(std::move(result)) {}

  bool EndOfFile() const override {
    if (result_.end_error) throw *result_.end_error;
    return row_ >= result_.rows.size();
  }
  bool BeginningOfFile() const override { return result_.rows.empty(); }
  void MoveNext() override {
    if (result_.move_error) throw *result_.move_error;
    ++row_;
  }
  Value Field(std::string_view name) const override {
    for (std::size_t i = 0; i < result_.fields.size(); ++i) {
      if (EqualsNoCase(result_.fields[i], name)) return result_.rows.at(row_).at(i);
    }
    throw RuntimeError(3265, "Item not found in this collection.", "DAO.Recordset");
  }
  Value Field(std::size_t position) const override { return result_.rows.at(row_).at(position); }
  const std::vector<std::string>& FieldNames() const override { return result_.fields; }
  void Close() override {
    ++script_.closed_sets;
    if (result_.close_error) throw *result_.close_error;
  }

 private:
  FakeScript& script_;
  FakeResult result_;
  std::size_t row_ = 0;
};

class FakeDatabase : public query::EngineDatabase {
 public:
  FakeDatabase(FakeScript& script, std::string name) : script_(script), name_(std::move(name)) {}

  const std::string& Name() const override { return name_; }
  std::unique_ptr<query::Recordset> OpenRecordset(std::string_view sql, int type,
                                                  int options) override {
    script_.asked.emplace_back(sql);
    script_.last_type = type;
    script_.last_options = options;
    const auto found = script_.results.find(std::string(sql));
    if (found == script_.results.end()) throw RuntimeError(3078, "no such table", "DAO.Database");
    if (found->second.open_error) throw *found->second.open_error;
    return std::make_unique<FakeRecordset>(script_, found->second);
  }
  query::TextMatch Texts() const override { return {}; }
  std::vector<query::TableSummary> Tables() const override { return {}; }
  std::int64_t Execute(std::string_view sql) override {
    script_.executed.emplace_back(sql);
    if (script_.execute_error) throw *script_.execute_error;
    return 1;
  }
  void BeginTrans() override {}
  void CommitTrans() override {}
  void Rollback() override {}

 private:
  FakeScript& script_;
  std::string name_;
};

class FakeWorkspace : public query::Workspace {
 public:
  explicit FakeWorkspace(FakeScript& script) : script_(script) {}

  std::unique_ptr<query::EngineDatabase> OpenDatabase(const std::filesystem::path& path) override {
    script_.opened.push_back(path.string());
    if (script_.open_error) throw *script_.open_error;
    return std::make_unique<FakeDatabase>(script_, path.string());
  }
  void Expect(const std::filesystem::path&, std::vector<std::string>) override {}
  void OnWaiting(std::function<bool()>) override {}

 private:
  FakeScript& script_;
};

}  // namespace tenora::test
