// The rental database, a file or a branch on a PostgreSQL server: where it is, the one open
// connection, and the guarded record-set operations through which every read goes. Each operation
// catches its own errors and reports them under a fixed label through DataErrorReport; callers then
// see an empty result.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/program.h"
#include "data/settings.h"
#include "platform/query/engine.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"

namespace tenora {

using RecordsetPtr = std::unique_ptr<query::Recordset>;

enum class DatabaseUse {
  kChange,
  kLook,  // every statement and transaction that would change it is refused; errors are not logged
};

class Database {
 public:
  Database(const Platform& platform, Settings& settings, DatabaseUse use = DatabaseUse::kChange)
      : platform_(platform), settings_(settings), use_(use) {}

  bool OnlyLooks() const { return use_ == DatabaseUse::kLook; }

  // Where the settings say so and the file is there, on the server; else the program folder's own.
  // For a branch on a database server ("service=NAME branch=NAME") there is no other.
  void OpenDatabase();
  void CloseDatabase();
  // Lets the user look for a database that is missing: the box that tells so has "Browse…", which
  // calls `browse`; where that gives true, what the settings name now is opened. Empty: no such
  // button, as it is at first.
  void OnMissing(std::function<bool()> browse) { browse_ = std::move(browse); }
  // Whether OpenDatabase would succeed at this moment. Shows nothing; raises as Location.
  bool CanBeRead();
  bool IsOpen() const { return open_ != nullptr; }
  // Who issues the running numbers of an open branch on a server; null for a file.
  query::NumberServer* Numbers() { return open_ == nullptr ? nullptr : open_->Numbers(); }

  // The file or branch that OpenDatabase would open now; nothing is shown. Raises 13 for settings
  // that cannot be read.
  std::filesystem::path Location();

  // Takes this branch instead of what the settings say, and this folder for its letters. Templates
  // stay those of the folder that was the data folder.
  void TakeBranch(const std::filesystem::path& location, const std::filesystem::path& folder);
  // Where the rows of the open database come from; none for a file.
  std::optional<query::BranchOrigin> Origin() const {
    return open_ == nullptr ? std::nullopt : open_->Origin();
  }
  // Rows of these codes will be asked for next: a server gives them together. Raises nothing: what
  // cannot be read is told when it is asked for.
  void Expect(std::vector<std::string> codes);

  // The stored location of the server's database that an open could not reach, so that the program
  // folder's own was read instead; none when that never happened.
  const std::optional<std::filesystem::path>& UnreachableServer() const {
    return unreachable_server_;
  }

  // The file or branch that was opened last; empty before the first.
  const std::filesystem::path& LastOpened() const { return last_opened_; }

  // The stored location of the server's database file while it cannot be reached. Shows nothing;
  // raises the errors of the settings.
  std::optional<std::filesystem::path> ServerAway();

  // While it lives, every open takes this file or branch or fails: what was begun with the server's
  // database must not go on with the local copy.
  class OneFile {
   public:
    OneFile(Database& database, std::filesystem::path file) : database_(database) {
      database_.only_file_ = std::move(file);
    }
    ~OneFile() { database_.only_file_.reset(); }
    OneFile(const OneFile&) = delete;
    OneFile& operator=(const OneFile&) = delete;

   private:
    Database& database_;
  };

  // The folder that holds templates and letters; decided at the first call and kept.
  std::filesystem::path DataFolder();
  // The one that holds templates; another one only after TakeBranch.
  std::filesystem::path TemplateFolder();
  // Set by the print commands: suppresses the data-folder warning.
  void SetCommandMode() { command_mode_ = true; }

  // Repairs the statement (insert, update or delete) and runs it. For kLook the error is 70
  // (Permission denied), as it is for a transaction.
  void ExecuteSQL(std::string_view statement);
  void CreateSet(RecordsetPtr& set, std::string_view sql, int type, int options);
  bool DataEOF(const RecordsetPtr& set);
  bool DataIsEmpty(const RecordsetPtr& set);
  void MoveNext(const RecordsetPtr& set);
  void DataClose(RecordsetPtr& set);

  // Compares texts as the open database does; without one, as an .mdb file.
  query::TextMatch Texts() const { return open_ ? open_->Texts() : query::TextMatch(); }

  // "select FIELD as result from TABLE CLAUSE": the first row's value, or the default for a null or
  // no row. A value that is not a text or date raises 13.
  std::string LookupText(std::string_view field, std::string_view table, std::string_view clause,
                         std::string_view default_text);
  Date LookupDate(std::string_view field, std::string_view table, std::string_view clause,
                  Date default_date);

  // Shows a failed database operation and appends it to the month's error log. The label names the
  // operation to the reader of the code only: neither the message nor the log line shows it.
  void DataErrorReport(std::string_view label, const RuntimeError& error);

  // How many errors DataErrorReport has shown: a caller that must not go on with the empty result
  // of a failed query compares before and after.
  std::size_t ErrorsReported() const { return errors_reported_; }

  const Platform& platform() const { return platform_; }

  // Statements that belong together: no other program changes the file between them, and all of
  // them are kept or none. Without Commit none is. Errors are reported as of "Execute SQL".
  class Transaction {
   public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // False when it could not begin: nothing must be read or changed then.
    bool IsOpen() const { return open_; }
    // False when nothing was kept, also after a reported error of a statement in between.
    bool Commit();

   private:
    Database& database_;
    std::size_t errors_before_;
    bool open_ = false;
  };

 private:
  // Runs one operation; an error is reported under its label.
  template <typename Body>
  void Reported(std::string_view label, Body&& body) {
    try {
      body();
    } catch (...) {
      DataErrorReport(label, CurrentError());
    }
  }

  // Shows and logs an error; whether its other button, if it has one, was pressed.
  bool Report(const RuntimeError& error, const std::string& other_button);
  std::filesystem::path OwnDatabase() const;
  bool IsNetworked();
  std::filesystem::path StoredLocation();
  std::filesystem::path LocateDatabase();
  std::filesystem::path DecideDataFolder();
  // The field's value in the first row, null when there is none.
  Value Lookup(std::string_view field, std::string_view table, std::string_view clause);

  // The open database for a change. Raises 91 without one, 70 where it is only looked at.
  query::EngineDatabase& ToChange();

  Platform platform_;
  Settings& settings_;
  const DatabaseUse use_;
  std::unique_ptr<query::EngineDatabase> open_;
  std::function<bool()> browse_;
  std::filesystem::path data_folder_, template_folder_;
  std::filesystem::path last_opened_;
  std::optional<std::filesystem::path> branch_;  // taken instead of what the settings say
  std::optional<std::filesystem::path> only_file_;
  std::optional<std::filesystem::path> unreachable_server_;
  // The stored location the user was told cannot be reached, until it is reached again.
  std::optional<std::filesystem::path> unreachable_told_;
  std::size_t errors_reported_ = 0;
  bool command_mode_ = false;
  // The set whose last MoveNext failed: it counts as ended, so that no loop over it runs on.
  const query::Recordset* stuck_ = nullptr;
};

// Keeps the database open for as long as it lives.
class OpenedDatabase {
 public:
  explicit OpenedDatabase(Database& database) : database_(database) { database_.OpenDatabase(); }
  OpenedDatabase(const OpenedDatabase&) = delete;
  OpenedDatabase& operator=(const OpenedDatabase&) = delete;
  ~OpenedDatabase() { database_.CloseDatabase(); }

 private:
  Database& database_;
};

// A column's value through a conversion (ToDate, ToBool, …), whose error names the column.
template <typename Convert>
auto ValueAs(const Convert& convert, const Value& value, std::string_view column) {
  return About([&] { return std::string("column \"").append(column).append("\""); },
               [&] { return convert(value); });
}
template <typename Convert>
auto FieldAs(const Convert& convert, const query::Recordset& row, std::string_view column) {
  return ValueAs(convert, row.Field(column), column);
}

// A missing amount counts as 0.
inline Currency AmountIn(const Value& value, std::string_view column) {
  return ValueAs([](const Value& amount) { return ToCurrency(NullTo(amount, Value(Currency()))); },
                 value, column);
}
inline Currency AmountOf(const query::Recordset& row, std::string_view column) {
  return AmountIn(row.Field(column), column);
}

}  // namespace tenora
