// An engine that knows the answers to a few statements, so that a test can hand the rental room
// rows that no well-kept database would hold, and sees the statements it sends.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/query/engine.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::test {

struct Rows {
  std::vector<std::string> columns;
  std::vector<std::vector<Value>> rows;
};

class ScriptedRecordset : public query::Recordset {
 public:
  explicit ScriptedRecordset(Rows rows) : rows_(std::move(rows)) {}
  bool EndOfFile() const override { return row_ >= rows_.rows.size(); }
  bool BeginningOfFile() const override { return rows_.rows.empty(); }
  void MoveNext() override {
    RequireRow();
    ++row_;
  }
  Value Field(std::string_view name) const override {
    for (std::size_t i = 0; i < rows_.columns.size(); ++i) {
      if (EqualsNoCase(rows_.columns[i], name)) return Field(i);
    }
    throw RuntimeError(3265, "Item not found in this collection: " + std::string(name));
  }
  Value Field(std::size_t position) const override {
    RequireRow();
    return rows_.rows[row_].at(position);
  }
  const std::vector<std::string>& FieldNames() const override { return rows_.columns; }
  void Close() override {}

 private:
  void RequireRow() const {
    if (EndOfFile()) throw RuntimeError(3021, "No current record");
  }

  Rows rows_;
  std::size_t row_ = 0;
};

class ScriptedEngine : public query::Workspace {
 public:
  // A statement without an answer is a syntax error, which the database reports in a box.
  std::map<std::string, Rows> answers;
  std::vector<std::string> statements;
  std::vector<std::string> executed;  // of changes

  // The answer to a scalar look-up; null values are empty sets.
  void AnswerLookup(const std::string& sql, Value value) {
    answers[sql] = IsNull(value) ? Rows{{"result"}, {}} : Rows{{"result"}, {{std::move(value)}}};
  }

  std::unique_ptr<query::Database> OpenDatabase(const std::filesystem::path& path) override {
    return std::make_unique<OpenFile>(*this, path.string());
  }

 private:
  class OpenFile : public query::Database {
   public:
    OpenFile(ScriptedEngine& engine, std::string name) : engine_(engine), name_(std::move(name)) {}
    const std::string& Name() const override { return name_; }
    std::unique_ptr<query::Recordset> OpenRecordset(std::string_view sql, int, int) override {
      engine_.statements.emplace_back(sql);
      const auto found = engine_.answers.find(std::string(sql));
      if (found == engine_.answers.end()) {
        throw RuntimeError(3075, "no answer for " + std::string(sql));
      }
      return std::make_unique<ScriptedRecordset>(found->second);
    }
    std::vector<query::TableSummary> Tables() const override { return {}; }
    std::int64_t Execute(std::string_view sql) override {
      engine_.executed.emplace_back(sql);
      return 1;
    }
    void BeginTrans() override {}
    void CommitTrans() override {}
    void Rollback() override {}

   private:
    ScriptedEngine& engine_;
    std::string name_;
  };
};

}  // namespace tenora::test
