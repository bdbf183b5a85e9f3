#include "platform/access/read/index_lookup.h"

#include <algorithm>

#include "platform/access/read/index_tree.h"
#include "platform/access/read/row_finder.h"

namespace tenora::access {
namespace {

// Rows of equal values are counted up to here; that so many rows are better read in a scan is known
// by then.
constexpr std::size_t kMostCounted = 1000;

// Whether rows of equal values, and no others, have equal keys that we know. Dates are equal to a
// second, but their keys are not.
bool HasKeyForEqual(const Column& column) {
  switch (column.type) {
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kCurrency:
    case ColumnType::kGuid:
      return true;
    case ColumnType::kText:
      return !column.fixed_length;
    default:
      return false;
  }
}

// Whether the keys sort as the values do.
bool HasKeyForRange(const Column& column) {
  const bool floating = column.type == ColumnType::kSingle || column.type == ColumnType::kDouble ||
                        column.type == ColumnType::kDateTime;
  return floating || (HasKeyForEqual(column) && column.type != ColumnType::kGuid);
}

// The order in which a scan finds them, each once.
void PutInOrder(std::vector<RowPointer>& rows) {
  const auto place = [](RowPointer row) { return std::uint64_t{row.page} << 8 | row.row; };
  std::ranges::sort(rows, {}, place);
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
}

std::size_t PositionOf(const TableDefinition& table, std::uint16_t number) {
  const auto found = std::ranges::find(table.columns, number, &Column::number);
  return static_cast<std::size_t>(found - table.columns.begin());
}

}  // namespace

IndexLookup::IndexLookup(std::shared_ptr<const TableData> table)
    : table_(std::move(table)), codec_(table_->file->header()) {}

// The index with only those of its leading parts that are among the columns.
PhysicalIndex IndexLookup::Start(const PhysicalIndex& index,
                                 std::span<const std::size_t> columns) const {
  PhysicalIndex start = index;
  const auto end = std::ranges::find_if_not(start.parts, [&](const PhysicalIndex::Part& part) {
    const std::size_t position = PositionOf(table_->definition, part.column_number);
    return std::ranges::find(columns, position) != columns.end() &&
           HasKeyForEqual(table_->definition.columns[position]);
  });
  start.parts.erase(end, start.parts.end());
  return start;
}

// How many rows have the values of one in the middle of the index. None if its key is not what we
// would write: other keys would not be found either.
std::optional<double> IndexLookup::RowsPerKey(const PhysicalIndex& index,
                                              const PhysicalIndex& start) const {
  const IndexPage leaf = MiddleLeaf(*table_->file, index.root_page);
  if (leaf.entries.empty()) return 1;
  const IndexEntry& entry = leaf.entries[leaf.entries.size() / 2];
  const RowFinder finder(table_, codec_);
  const StoredRow row = finder.Split(finder.Locate(entry.row));
  IndexKeyEncoder encoder(table_->definition, start, codec_);
  IndexKey key;
  encoder.Encode(row.Pick(encoder.columns()), key);
  if (!std::string_view(entry.key).starts_with(key)) return std::nullopt;
  const bool whole = start.parts.size() == index.parts.size();
  if (whole && (index.flags & kIndexUnique) != 0) return 1;
  std::vector<RowPointer> rows;
  RowsWithKey(*table_->file, index.root_page, key, kMostCounted, rows);
  return static_cast<double>(std::max<std::size_t>(rows.size(), 1));
}

std::string IndexLookup::NameOf(std::size_t number) const {
  std::string name;
  for (const LogicalIndex& index : table_->definition.logical_indexes) {
    if (index.physical == number && (name.empty() || index.primary)) name = index.name;
  }
  return name;
}

std::optional<IndexPath> IndexLookup::FindIndex(std::span<const std::size_t> columns) const {
  if (table_->file->header().format == Format::kJet3) return std::nullopt;
  std::optional<IndexPath> best;
  const std::vector<PhysicalIndex>& indexes = table_->definition.physical_indexes;
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    const PhysicalIndex start = Start(indexes[i], columns);
    if (start.parts.empty()) continue;
    const std::optional<double> rows = TryRowsPerKey(indexes[i], start);
    if (!rows || (best && best->rows_per_key <= *rows)) continue;
    best = IndexPath{.number = i, .name = NameOf(i), .columns = {}, .rows_per_key = *rows};
    for (const PhysicalIndex::Part& part : start.parts) {
      best->columns.push_back(PositionOf(table_->definition, part.column_number));
    }
  }
  return best;
}

std::optional<double> IndexLookup::TryRowsPerKey(const PhysicalIndex& index,
                                                 const PhysicalIndex& start) const {
  try {
    return RowsPerKey(index, start);
  } catch (const NotEncodable&) {
    return std::nullopt;
  } catch (const Corruption&) {
    return std::nullopt;
  } catch (const RuntimeError&) {
    return std::nullopt;  // an entry of a row that is gone
  }
}

std::optional<IndexPath> IndexLookup::FindRangeIndex(std::size_t column) const {
  if (table_->file->header().format == Format::kJet3) return std::nullopt;
  if (!HasKeyForRange(table_->definition.columns[column])) return std::nullopt;
  const std::vector<PhysicalIndex>& indexes = table_->definition.physical_indexes;
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    if (indexes[i].parts.empty()) continue;
    PhysicalIndex start = indexes[i];
    start.parts.resize(1);
    if (PositionOf(table_->definition, start.parts[0].column_number) != column) continue;
    const std::optional<double> rows = TryRowsPerKey(indexes[i], start);
    if (rows)
      return IndexPath{.number = i, .name = NameOf(i), .columns = {column}, .rows_per_key = *rows};
  }
  return std::nullopt;
}

IndexKey IndexLookup::KeyOf(const PhysicalIndex& start, std::size_t column,
                            const Value& value) const {
  const TableDefinition& definition = table_->definition;
  const Field field = EncodeField(definition.columns[column], definition.places[column], value);
  const StoredField stored{field.has_value(), field ? Bytes(*field) : Bytes()};
  IndexKeyEncoder encoder(definition, start, codec_);
  IndexKey key;
  encoder.Encode({&stored, 1}, key);
  return key;
}

std::optional<std::vector<RowPointer>> IndexLookup::FindRange(const IndexPath& path,
                                                              const KeyRange& range,
                                                              std::size_t most) const {
  PhysicalIndex start = table_->definition.physical_indexes.at(path.number);
  start.parts.resize(1);
  const bool descending = start.parts[0].descending;
  // The first byte of every key but that of null.
  const IndexKey any(1, descending ? '\x80' : '\x7F');
  std::vector<RowPointer> rows;
  try {
    const auto bound = [&](const Value& value) {
      return IsNull(value) ? any : KeyOf(start, path.columns.at(0), value);
    };
    IndexKey low = bound(range.from), high = bound(range.to);
    if (descending) std::swap(low, high);
    if (!RowsInRange(*table_->file, start.root_page, low, high, most, rows)) return std::nullopt;
  } catch (const NotEncodable&) {
    return std::nullopt;
  } catch (const RuntimeError&) {
    return std::nullopt;  // the column cannot hold the bound
  }
  PutInOrder(rows);
  return rows;
}

std::optional<std::vector<RowPointer>> IndexLookup::FindRows(const IndexPath& path,
                                                             std::span<const Value> values,
                                                             std::size_t most) const {
  const TableDefinition& definition = table_->definition;
  const PhysicalIndex start = Start(definition.physical_indexes.at(path.number), path.columns);
  std::vector<RowPointer> rows;
  try {
    std::vector<Field> fields;
    std::vector<StoredField> stored;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const std::size_t column = path.columns[i];
      fields.push_back(
          EncodeField(definition.columns[column], definition.places[column], values[i]));
    }
    for (const Field& field : fields) stored.push_back({field.has_value(), Bytes(*field)});
    IndexKeyEncoder encoder(definition, start, codec_);
    IndexKey key;
    encoder.Encode(stored, key);
    if (!RowsWithKey(*table_->file, definition.physical_indexes[path.number].root_page, key, most,
                     rows)) {
      return std::nullopt;
    }
  } catch (const NotEncodable&) {
    return std::nullopt;
  } catch (const RuntimeError& error) {
    // No row can have a number that the column cannot hold. What equals a longer text is not known.
    if (error.number() == engine_error::kNumericOverflow) return rows;
    return std::nullopt;
  }
  PutInOrder(rows);
  return rows;
}

}  // namespace tenora::access
