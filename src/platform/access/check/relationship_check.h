// The relationships between tables that the engine enforces, from the table MSysRelationships: no
// row may refer to a row that is missing.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/check/key_list.h"
#include "platform/access/read/relationships.h"

namespace tenora::access {

class RelationshipCheck {
 public:
  // `tables` are those whose definitions could be read; they must outlive the check.
  RelationshipCheck(const CheckContext& context,
                    const std::vector<std::shared_ptr<const TableData>>& tables);

  // The key lists that the rows of a table are to be added to.
  std::vector<KeyList*> WantedOf(const TableData& table) const;
  // When the rows of all tables are added.
  void Run();

 private:
  struct Checked {
    Relationship relationship;
    const TableData* from = nullptr;
    const TableData* to = nullptr;
    std::unique_ptr<KeyList> keys, referenced_keys;  // null: cannot be compared
  };
  Checked Prepare(Relationship relationship);
  void Compare(Checked& checked);

  const CheckContext& context_;
  const std::vector<std::shared_ptr<const TableData>>& tables_;
  std::vector<Checked> relationships_;
};

}  // namespace tenora::access
