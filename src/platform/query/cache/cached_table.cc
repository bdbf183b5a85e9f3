#include "platform/query/cache/cached_table.h"

#include <algorithm>
#include <bit>
#include <unordered_set>

#include "platform/query/cache/cell.h"

namespace tenora::query {
namespace {

// A wrong row count in the file must not make us reserve unlimited memory.
constexpr std::int64_t kMostReservedRows = 1 << 20;

std::uint64_t HashInteger(std::int64_t number) {
  std::uint64_t hash = static_cast<std::uint64_t>(number) * 0x9E3779B97F4A7C15;
  return hash ^ hash >> 32;
}

}  // namespace

CachedColumn::CachedColumn(const access::Column& column, std::int64_t expected_rows)
    : name_(column.name),
      column_type_(column.type),
      type_(TypeOf(column.type)),
      collation_(&Collation::Of(column.sort_order)) {
  const auto rows =
      static_cast<std::size_t>(std::clamp<std::int64_t>(expected_rows, 0, kMostReservedRows));
  if (type_ == Type::kText || IsStoredAsBytes(type_))
    ends_.reserve(rows);
  else if (type_ == Type::kDouble)
    doubles_.reserve(rows);
  else
    integers_.reserve(rows);
}

void CachedColumn::AppendBytes(std::string_view bytes) {
  bytes_.append(bytes);
  ends_.push_back(bytes_.size());
}

void CachedColumn::Append(access::RowCursor& cursor, std::size_t column) {
  if (cursor.IsNull(column)) {
    nulls_.resize(rows_ + 1);
    nulls_[rows_] = true;
  }
  ++rows_;
  if (type_ == Type::kText) {
    AppendBytes(cursor.Text(column));
  } else if (IsStoredAsBytes(type_)) {
    std::string buffer;
    AppendBytes(BytesCell(cursor, column, column_type_, buffer));
  } else if (type_ == Type::kDouble) {
    doubles_.push_back(DoubleCell(cursor, column, column_type_));
  } else {
    integers_.push_back(IntegerCell(cursor, column, column_type_));
  }
}

void CachedColumn::LeaveOut(RowNumber rows) {
  nulls_.assign(rows, true);
  rows_ = rows;
}

void CachedColumn::PrefetchPlace(RowNumber row) const {
  if (!integers_.empty()) {
    __builtin_prefetch(&integers_[row]);
  } else if (!doubles_.empty()) {
    __builtin_prefetch(&doubles_[row]);
  } else {
    __builtin_prefetch(&ends_[row]);
  }
}

void CachedColumn::PrefetchBytes(RowNumber row) const {
  if (!ends_.empty()) __builtin_prefetch(Bytes(row).data());
}

void CachedColumn::ShrinkToFit() {
  nulls_.shrink_to_fit();
  integers_.shrink_to_fit();
  doubles_.shrink_to_fit();
  bytes_.shrink_to_fit();
  ends_.shrink_to_fit();
}

std::uint64_t CachedColumn::Hash(RowNumber row) const {
  return type_ == Type::kText ? collation_->Hash(Bytes(row)) : HashInteger(integers_[row]);
}

bool CachedColumn::Equal(RowNumber left, RowNumber right) const {
  return type_ == Type::kText ? collation_->Compare(Bytes(left), Bytes(right)) == 0
                              : integers_[left] == integers_[right];
}

LookupIndex::LookupIndex(const CachedColumn& column, RowNumber rows) {
  heads_.assign(std::bit_ceil(std::max<std::size_t>(rows, 1)), kNoGroup);
  std::vector<std::uint32_t> group_of(rows, kNoGroup);
  for (RowNumber row = 0; row < rows; ++row) {
    if (column.IsNull(row)) continue;
    const std::uint64_t hash = column.Hash(row);
    std::uint32_t number =
        FindGroup(hash, [&](RowNumber first) { return column.Equal(first, row); });
    if (number == kNoGroup) {
      number = static_cast<std::uint32_t>(groups_.size());
      std::uint32_t& head = heads_[hash & (heads_.size() - 1)];
      groups_.push_back({.first = row, .next = head});
      head = number;
    }
    ++groups_[number].count;
    group_of[row] = number;
  }
  groups_.shrink_to_fit();
  std::uint32_t filled = 0;
  for (Group& group : groups_) {
    group.end = filled;
    filled += group.count;
  }
  rows_.resize(filled);
  for (RowNumber row = 0; row < rows; ++row) {
    if (group_of[row] != kNoGroup) rows_[groups_[group_of[row]].end++] = row;
  }
}

CachedTable::CachedTable(std::string name, const std::vector<access::Column>& columns,
                         std::int64_t expected_rows, access::RowCursor& rows, ColumnMask used)
    : name_(std::move(name)) {
  for (const access::Column& column : columns) columns_.emplace_back(column, expected_rows);
  while (rows.Next()) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (IsUsed(used, i)) columns_[i].Append(rows, i);
    }
    ids_.push_back(RowKey(rows.Id()));
    ++rows_;
  }
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (!IsUsed(used, i)) columns_[i].LeaveOut(rows_);
    columns_[i].ShrinkToFit();
  }
  ids_.shrink_to_fit();
  indexes_.resize(columns_.size());
  rows_per_value_.resize(columns_.size());
}

double CachedTable::RowsPerValue(std::size_t column) {
  double& result = rows_per_value_[column];
  if (result > 0) return result;
  // Evenly spaced samples distinguish columns of few values from those of many.
  constexpr RowNumber kSamples = 2048;
  const RowNumber step = std::max<RowNumber>(rows_ / kSamples, 1);
  std::unordered_set<std::uint64_t> values;
  RowNumber samples = 0;
  for (RowNumber row = 0; row < rows_ && rows_ - row >= step; row += step, ++samples)
    if (!columns_[column].IsNull(row)) values.insert(columns_[column].Hash(row));
  const double distinct = std::max<double>(static_cast<double>(values.size()), 1);
  // If half the samples or more differ, the number of values is assumed to grow with the table.
  const bool grows = distinct * 2 >= static_cast<double>(samples);
  result = grows ? std::max(static_cast<double>(samples) / distinct, 1.0)
                 : std::max(static_cast<double>(rows_) / distinct, 1.0);
  return result;
}

const LookupIndex& CachedTable::IndexOf(std::size_t column) {
  std::optional<LookupIndex>& index = indexes_[column];
  if (!index) index.emplace(columns_[column], rows_);
  return *index;
}

std::span<const RowNumber> CachedTable::Matches(std::size_t column, std::int64_t value) {
  return IndexOf(column).Find(
      HashInteger(value), [&](RowNumber row) { return columns_[column].Integer(row) == value; });
}

std::span<const RowNumber> CachedTable::Matches(std::size_t column, std::string_view value) {
  const Collation& collation = columns_[column].collation();
  return IndexOf(column).Find(collation.Hash(value), [&](RowNumber row) {
    return collation.Compare(columns_[column].Bytes(row), value) == 0;
  });
}

}  // namespace tenora::query
