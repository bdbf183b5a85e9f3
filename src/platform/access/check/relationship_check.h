// Checks the enforced relationships of the table MSysRelationships: no row refers to a row that is
// missing. Their keys are kept as hashes, in bounded memory; where the hash of a key is missing,
// the rows are read again to find those that have it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/check/key_hashes.h"
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
  // Adds all rows of a table once more; may raise Corruption.
  using ReadAgain = std::function<void(const TableData&, KeyList&)>;
  // To be called when the rows of all tables have been added.
  void Run(const ReadAgain& read_again);

 private:
  // Stops a file crafted to keep the checker busy; of a real one few tables are read again.
  static constexpr int kMostReadings = 64;

  struct Checked {
    Relationship relationship;
    const TableData* from = nullptr;
    const TableData* to = nullptr;
    PhysicalIndex columns, referenced_columns;
    std::unique_ptr<KeyList> keys, referenced_keys;  // null: not comparable
    // What those two have been given.
    std::unique_ptr<KeyHashes> hashes, referenced_hashes;
  };
  Checked Prepare(Relationship relationship);
  // Gets ready for the rows; each side keeps at most that many hashes.
  void Start(Checked& checked, std::size_t most) const;
  void Compare(Checked& checked, const ReadAgain& read_again);
  // Fills the hashes with those of all rows again; false when that was done too often.
  bool Collect(Checked& checked, const ReadAgain& read_again);
  void ComparePart(Checked& checked, const ReadAgain& read_again);

  const CheckContext& context_;
  const std::vector<std::shared_ptr<const TableData>>& tables_;
  std::vector<Checked> relationships_;
  int readings_left_ = kMostReadings;
};

}  // namespace tenora::access
