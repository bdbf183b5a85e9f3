// The relationships between tables that the engine enforces, from the table MSysRelationships: no
// row may refer to a row that is missing.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/access/check_context.h"
#include "platform/access/check_keys.h"
#include "platform/access/relationships.h"

namespace tenora::access {

// A table of the file whose definition could be read.
struct DefinedTable {
  std::string name;
  TableDefinition definition;
};

class RelationshipCheck {
 public:
  // `tables` must outlive the check; `file` is context.file.
  RelationshipCheck(const CheckContext& context, std::shared_ptr<const PageFile> file,
                    const std::vector<DefinedTable>& tables);

  // The key lists that the rows of a table are to be added to.
  std::vector<KeyList*> WantedOf(const DefinedTable& table) const;
  // When the rows of all tables are added.
  void Run();

 private:
  struct Checked {
    Relationship relationship;
    const DefinedTable* from = nullptr;
    const DefinedTable* to = nullptr;
    std::unique_ptr<KeyList> keys, referenced_keys;  // null: cannot be compared
  };
  Checked Prepare(Relationship relationship);
  void Compare(Checked& checked);

  const CheckContext& context_;
  const std::vector<DefinedTable>& tables_;
  std::vector<Checked> relationships_;
};

}  // namespace tenora::access
