// The keys of a table's rows over the columns of an index or of a relationship: all of them, those
// of some rows, or of a table too large for memory only their sum. Or each is handed on.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/access/format/index_key.h"
#include "platform/access/format/row.h"

namespace tenora::access {

// A sum over keys and their rows, in any order. Where two sums are equal, so are the keys and rows,
// but for one chance in 2^64.
struct KeySum {
  std::uint64_t count = 0, sum = 0;

  void Add(std::string_view key, RowPointer row);
  bool operator==(const KeySum&) const = default;
};

// One of several parts into which the rows of a table are divided, so that each fits into memory.
struct RowPart {
  enum class By { kRow, kKey };  // kKey: rows of equal keys are in the same part
  By by = By::kRow;
  std::uint64_t number = 0, count = 1;

  bool Has(std::string_view key, RowPointer row) const;
};

class KeyList {
 public:
  enum class Keep { kKeys, kSum };
  using Handler = std::function<void(std::string_view key, RowPointer row, bool has_null)>;

  struct Entry {
    IndexKey key;
    RowPointer row;
    bool has_null = false;
  };

  // `table` and `codec` must outlive the list.
  KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec,
          Keep keep = Keep::kKeys, RowPart part = {});
  // Hands every key that can be encoded to `handler`, and keeps none.
  KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec,
          Handler handler);

  // Adds the row unless it is in another part. Raises Corruption when a column extends beyond it.
  void Add(RowPointer home, const Row& row);
  // Sorts entries() by key and row, unkeyed() by row.
  void Sort();

  const std::vector<Entry>& entries() const { return entries_; }
  // The rows whose keys cannot be encoded, and how many they are.
  const std::vector<RowPointer>& unkeyed() const { return unkeyed_; }
  std::size_t unkeyed_count() const { return unkeyed_count_; }
  const RowPart& part() const { return part_; }
  // Of all keys that could be encoded. Without the list entries() and unkeyed() are empty.
  const KeySum& sum() const { return sum_; }
  bool is_sum() const { return keep_ == Keep::kSum; }
  // Why not; empty when all keys can be encoded.
  const std::string& reason() const { return reason_; }
  // Whether keys can be encoded at all; those of some rows may still be missing.
  bool has_keys() const { return encoder_.has_value(); }

 private:
  void AddUnkeyed(RowPointer home);

  const TableDefinition& table_;
  Keep keep_;
  RowPart part_;
  std::optional<IndexKeyEncoder> encoder_;
  std::vector<StoredField> fields_;
  std::vector<Entry> entries_;
  std::vector<RowPointer> unkeyed_;
  std::size_t unkeyed_count_ = 0;
  KeySum sum_;
  std::string reason_;
  Handler handler_;  // may be empty
};

}  // namespace tenora::access
