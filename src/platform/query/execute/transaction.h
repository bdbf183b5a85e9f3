// Statements that change rows, run within one transaction on the file.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_writer.h"
#include "platform/query/engine.h"
#include "platform/query/execute/connection_cache.h"
#include "platform/query/sql/syntax.h"

namespace tenora::query {

class Transaction {
 public:
  // `connect` gives a connection to the file as it is now; it is called within the
  // transaction, and only for statements that need more than look-ups by equality.
  Transaction(const std::filesystem::path& path, std::function<FileConnection()> connect);

  // The number of rows changed. Raises what ParseAction, WritableTable and selects raise, 3128 and
  // 3219 where it is not clear what an update or delete of joined tables changes, and 3219 for a
  // statement that reads tables other than by "column = literal" after an earlier change in this
  // transaction. What is refused is refused before the first row changes.
  std::int64_t Execute(std::string_view statement);

  // The rows of a select from one table by equality, including the transaction's own changes, found
  // through the table's indexes; null for every other statement.
  std::unique_ptr<Recordset> TrySelect(std::string_view statement);

  bool changed() const { return !changed_tables_.empty(); }
  // The tables that the commit changes, as the file spells them.
  const std::set<std::string>& changed_tables() const { return changed_tables_; }
  // Raises 3219 if a statement failed after changing some of its rows.
  access::CommitStates Commit();

 private:
  using Values = std::vector<access::ColumnValue>;
  struct Change {
    access::RowId row;
    Values values;
  };

  // A table among those of an update or delete.
  struct Target {
    std::string name;  // in the statement: its alias, if it has one
    access::WritableTable* table = nullptr;
  };

  std::int64_t Insert(Action action, std::string_view statement, const std::vector<Token>& tokens);
  // The values of the rows to insert, without defaults.
  std::vector<Values> InsertedValues(Action& action, const access::WritableTable& table,
                                     std::string_view statement, const std::vector<Token>& tokens);
  // The default values of the columns that an insert does not name.
  Values Defaults(const access::WritableTable& table, const Values& named);
  Value EvaluateDefault(std::string_view expression);
  // The value of an expression that names no columns.
  Value Evaluate(ExpressionPtr expression, std::string_view statement,
                 const std::vector<Token>& tokens);
  void RequireWhole() const;
  // Raises 3219 after a change: selects see the file as it was before.
  void RequireUnchanged(std::string_view statement) const;
  // The table that an update or delete changes.
  Target FindTarget(const Action& action, std::string_view statement);
  // The rows that an update or delete applies to, each with its new values.
  std::vector<Change> FindChanges(Action action, const Target& target, std::string_view statement,
                                  const std::vector<Token>& tokens);
  std::vector<Change> FindBySelect(Action action, const Target& target, std::string_view statement,
                                   const std::vector<Token>& tokens);

  std::function<FileConnection()> connect_;
  std::unique_ptr<access::WriteTransaction> transaction_;
  std::set<std::string> changed_tables_;
  bool half_done_ = false;
};

}  // namespace tenora::query
