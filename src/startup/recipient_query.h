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

namespace tenora {

class RecipientQuery {
 public:
  // The session's caches are loaded, its database is not open. Raises ConditionError for a
  // condition, a column or a filter's name that is none.
  RecipientQuery(Session& session, const GenerateCall& call, std::ostream& errors);

  // Prints the list, or its table. False when somebody's fact cannot be known, which is told.
  bool List(std::ostream& output);
  // Those whom the conditions leave; of the others whose facts cannot be known is told.
  std::vector<Recipient> Recipients();
  // Whether nobody was left out for facts that cannot be known.
  bool complete() const { return complete_; }

 private:
  RecipientTable Read(std::vector<std::string> names);
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
