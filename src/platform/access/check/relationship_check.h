// Checks the enforced relationships of the table MSysRelationships: no row refers to a row that is
// missing.
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

  // The key lists to which all rows of a table must be added before Run.
  std::vector<KeyList*> WantedOf(const TableData& table) const;
  // To be called when the rows of all tables have been added.
  void Run();

 private:
  struct Checked {
    Relationship relationship;
    const TableData* from = nullptr;
    const TableData* to = nullptr;
    std::unique_ptr<KeyList> keys, referenced_keys;  // null: not comparable
  };
  Checked Prepare(Relationship relationship);
  void Compare(Checked& checked);

  const CheckContext& context_;
  const std::vector<std::shared_ptr<const TableData>>& tables_;
  std::vector<Checked> relationships_;
};

}  // namespace tenora::access
