// The recipients' table on the command line: which columns, and how they are printed.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "letters/recipient_table.h"
#include "merge/fact.h"
#include "platform/locale/locale.h"
#include "startup/text_table.h"

namespace tenora {

struct ListingColumn {
  std::string name;  // as FactNames has it, or a field's
  FactType type;
};

// The columns of a text such as "Tenant Name, Balance Owing": names as conditions take them, commas
// between; "all" for every one; the usual ones for an empty text. Raises ConditionError for a name
// that there is not, with those there are.
std::vector<ListingColumn> ListingColumns(std::string_view text,
                                          const std::vector<std::string>& usual,
                                          const FactNames& names);
ListingColumn ColumnOf(std::string_view name, const FactNames& names);

// "Balance Owing      amount", a line each; then the fields of the office's own.
void PrintColumnNames(std::ostream& output, const FactNames& names);

// The rows as the format has them. A cell whose fact cannot be known is empty and is told on
// `errors`, and `complete` becomes false.
TextTable ListingOf(const RecipientTable& table, const std::vector<std::size_t>& rows,
                    const std::vector<ListingColumn>& columns, ListingFormat format,
                    const Locale& locale, std::ostream& errors, bool& complete);

// The listings of several branches as one, each row with its branch in front. A column that a
// branch does not have is empty for it.
struct BranchListing {
  std::string branch;
  TextTable table;
};
TextTable JoinBranches(const std::vector<BranchListing>& listings, ListingFormat format);

}  // namespace tenora
