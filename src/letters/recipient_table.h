// The recipients of a template's letters as a table: each fact of theirs can be a column, rows are
// chosen by conditions and sorted by a column's values. Knows nothing of windows.
//
// Reading needs a session whose database is open and whose caches are loaded, on the thread that
// uses that session: beside a window, a DetachedSession's. A table that has been read needs no
// session any more and may be handed to another thread; const calls may come from several.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "letters/recipients.h"
#include "merge/condition.h"
#include "merge/fact.h"
#include "platform/locale/locale.h"
#include "rental/session.h"

namespace tenora {

// The facts that recipients of a template kind have: kLastLetterFact too, which a table knows only
// with a template, and those of PropertyFactNames, which owners have who are listed by property;
// null for a kind without recipients.
const FactNames* RecipientFactNames(std::string_view template_kind);
// The same with the fields of the office's own that the session's open database has, and no other
// fields: a misspelt one is unknown.
FactNames RecipientFactNames(Session& session, std::string_view template_kind);
// Those of them that a row has only where owners are listed once for each property.
bool IsPropertyFact(std::string_view template_kind, std::string_view name);
// The columns that a table shows at first.
const std::vector<std::string>& UsualColumns(std::string_view template_kind,
                                             bool by_property = false);

// A fact as people read it: dates short, amounts as currency, "yes" and "no"; empty for none.
std::string FactText(const Locale& locale, const Fact& fact);

class RecipientTable {
 public:
  // Whose table it is.
  struct Subject {
    std::string template_kind;
    bool by_property = false;                // owners once for each of their properties
    std::string template_name = {};          // whose letters "Last Letter" is of; empty: of none
    std::filesystem::path data_folder = {};  // where those are
  };

  // Reads the facts of these names, as FactNames has them, of all recipients, open and closed, and
  // no others. Raises what AllTenancies raises. When a stop is asked for, it ends soon, and the
  // table is incomplete.
  RecipientTable(Session& session, const Subject& subject, std::span<const std::string> names,
                 const std::stop_token& stop = {});
  ~RecipientTable();
  RecipientTable(RecipientTable&&) noexcept;
  RecipientTable& operator=(RecipientTable&&) noexcept;

  // In the list's order, open ones first.
  std::size_t size() const { return rows_.size(); }
  const RecipientRow& Row(std::size_t row) const { return rows_[row]; }

  // What stands in a column. A fact that cannot be known, for a row of the data that cannot be
  // read, concerns one recipient.
  struct Cell {
    Fact fact = {};
    std::string problem = {};  // "94 - Invalid use of Null: …"; then there is no fact
  };
  // A fact that was not read is an error of the program: std::logic_error.
  Cell At(std::size_t row, std::string_view name) const;

  // What is to be said of a row whose facts are empty: a property's owner has no name, so that
  // nobody can write there. Empty for any other row.
  std::string Remark(std::size_t row) const;

  // The rows that a filter leaves.
  struct Selection {
    std::vector<std::size_t> rows;
    // Those of whom it cannot be said whether the condition holds, with the problem: not in `rows`.
    std::vector<std::pair<std::size_t, std::string>> undecided;
  };
  // Without a condition, those that ListRecipients gives. The facts it needs have been read.
  Selection Select(const RecipientFilter& filter, const Condition* condition) const;

  // By the column's values, not their text; rows without one come last either way. Equal rows keep
  // their order.
  void Sort(std::vector<std::size_t>& rows, std::string_view name, bool descending) const;

 private:
  struct Facts;
  std::vector<RecipientRow> rows_;
  Date today_;
  std::unique_ptr<Facts> facts_;
};

}  // namespace tenora
