// The relationships between tables that the engine enforces, from the table MSysRelationships: no
// row may refer to a row that is missing.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/access/check_context.h"
#include "platform/access/check_keys.h"

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
  struct Pair {
    std::string column, referenced_column;
  };
  struct Relationship {
    std::string name, table, referenced_table;
    std::map<std::int64_t, Pair> columns;  // by their order
    const DefinedTable* from = nullptr;
    const DefinedTable* to = nullptr;
    std::unique_ptr<KeyList> keys, referenced_keys;
  };
  void ReadAll(const std::shared_ptr<const PageFile>& file);
  void Prepare(Relationship& relationship);
  void Compare(Relationship& relationship);

  const CheckContext& context_;
  const std::vector<DefinedTable>& tables_;
  std::map<std::string, Relationship> relationships_;  // by name
};

}  // namespace tenora::access
