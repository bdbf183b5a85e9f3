// Checks one index of a table: its pages, their order and links, and its entries against the rows.
#pragma once

#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/check/key_list.h"
#include "platform/access/read/index_tree.h"

namespace tenora::access {

class IndexCheck {
 public:
  // `keys` are the sorted keys of the table's rows, or their sum. All arguments must outlive the
  // check.
  IndexCheck(const CheckContext& context, FindingPlace place, const TableDefinition& table,
             const PhysicalIndex& index, const KeyList& keys);

  void Run();

  // After Run with a sum: whether the entries are not those of the rows, or a key is there twice
  // although the index is unique. Which rows are concerned, the next two find out.
  bool Differs() const;
  bool unique() const { return (index_.flags & kIndexUnique) != 0; }
  // Compares the entries of some rows with their sorted keys.
  void CompareEntries(const KeyList& keys);
  // `keys` are the sorted keys of rows among which are all those of equal keys.
  void CheckUnique(const KeyList& keys);

 private:
  void Visit(std::uint32_t number, std::size_t level);
  void VisitNode(std::uint32_t number, const IndexPage& page, std::size_t level);
  void CheckPage(const IndexPage& page, std::uint32_t number, std::size_t level);
  void CheckOrder(const IndexEntry& entry, std::uint32_t page);
  void MatchEntry(const IndexEntry& entry, std::uint32_t page);
  void ExplainEntry(const IndexEntry& entry, std::uint32_t page);
  void CheckRowsHaveEntries();
  bool IsBlank(std::uint32_t number) const;
  void Fault(std::optional<std::uint32_t> page, std::string what);

  // The last page visited on each level, and the one that it names as the next.
  struct Level {
    std::uint32_t page = 0;
    std::uint32_t next = 0;
  };

  const CheckContext& context_;
  FindingPlace place_;
  const TableDefinition& table_;
  const PhysicalIndex& index_;
  const KeyList* keys_;
  UsageMap owned_;
  PageLedger::User user_;
  std::vector<Level> levels_;
  std::size_t leaf_level_ = 0;  // 0: no leaf visited yet
  IndexEntry last_;             // the last entry visited
  bool has_last_ = false;
  bool complete_ = true;                  // every page of the tree could be read
  std::vector<std::uint32_t> leaves_;     // visited, if keys_ is a sum
  KeySum sum_;                            // of the entries visited
  bool repeats_ = false;                  // two entries have the same key
  std::size_t position_ = 0;              // in keys_->entries(), where the next entry should match
  std::vector<bool> matched_;             // of keys_->entries()
  std::vector<bool> unkeyed_matched_;     // of keys_->unkeyed()
  std::vector<std::uint32_t> explained_;  // rows, as page << 8 | row, that have a faulty entry
  std::vector<std::uint32_t> rows_;       // of keys_->entries(), sorted; filled when needed
};

}  // namespace tenora::access
