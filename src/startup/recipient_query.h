// Whom `tenora generate` lists or writes to, by what is known of them: --where, --filter,
// --columns, --sort.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "letters/recipient_table.h"
#include "merge/condition.h"
#include "rental/session.h"
#include "startup/generate_call.h"
#include "startup/recipient_listing.h"

namespace tenora {

class RecipientQuery {
 public:
  // The session's caches are loaded, its database is not open. Raises ConditionError for a
  // condition, a column or a filter's name that is none.
  RecipientQuery(Session& session, const GenerateCall& call, std::ostream& errors);

  // Prints the lines of the list, each behind this text.
  void List(std::ostream& output, const std::string& before_line);
  // The list as a table. Facts that cannot be known are told.
  TextTable Table();
  // Those whom the conditions leave; of the others whose facts cannot be known is told.
  std::vector<Recipient> Recipients();
  // Whether nobody was left out, and no cell left empty, for facts that cannot be known.
  bool complete() const { return complete_; }

 private:
  RecipientTable Read(std::vector<std::string> names);
  bool EveryColumn() const;
  std::vector<ListingColumn> Columns() const;
  // Reads the facts of these columns, and chooses and sorts the rows.
  struct Chosen {
    RecipientTable table;
    std::vector<std::size_t> rows;
  };
  Chosen Choose(const std::vector<ListingColumn>& columns);
  std::vector<std::size_t> Rows(const RecipientTable& table);

  Session& session_;
  const GenerateCall& call_;
  std::ostream& errors_;
  std::optional<FactNames> names_;
  std::optional<Condition> condition_;
  bool complete_ = true;
};

// Prints the columns that there are. The session's database need not be there.
void PrintColumnHelp(Session& session, const GenerateCall& call, std::ostream& output);

}  // namespace tenora
