#include "platform/access/format/index_key.h"

#include <algorithm>

#include "platform/access/format/field_codec.h"

namespace tenora::access {
namespace {

constexpr char kAscendingValue = 0x7F;
constexpr char kAscendingNull = 0;
constexpr std::size_t kPiece = 8;
constexpr char kPieceGoesOn = 9;

void Invert(IndexKey& key, std::size_t from) {
  std::transform(key.begin() + static_cast<std::ptrdiff_t>(from), key.end(),
                 key.begin() + static_cast<std::ptrdiff_t>(from),
                 [](char byte) { return static_cast<char>(~byte); });
}

void RequireSize(Bytes stored, std::size_t size) {
  if (stored.size() < size) throw NotEncodable("the value is too short");
}

void AppendReversed(Bytes stored, std::size_t size, IndexKey& key) {
  RequireSize(stored, size);
  for (std::size_t i = size; i > 0; --i) key += static_cast<char>(Load8(&stored[i - 1]));
}

void AppendSigned(Bytes stored, std::size_t size, IndexKey& key) {
  const std::size_t start = key.size();
  AppendReversed(stored, size, key);
  key[start] = static_cast<char>(key[start] ^ 0x80);
}

void AppendFloating(Bytes stored, std::size_t size, IndexKey& key) {
  const std::size_t start = key.size();
  AppendReversed(stored, size, key);
  if ((key[start] & 0x80) != 0) {
    Invert(key, start);
  } else {
    key[start] = static_cast<char>(key[start] ^ 0x80);
  }
}

void AppendPieces(std::string_view bytes, IndexKey& key) {
  if (bytes.empty()) return;
  while (bytes.size() > kPiece) {
    key.append(bytes.substr(0, kPiece)) += kPieceGoesOn;
    bytes.remove_prefix(kPiece);
  }
  key.append(bytes).append(kPiece - bytes.size(), '\0');
  key += static_cast<char>(bytes.size());
}

// In a descending key the pieces and the last one's length are inverted, the marks between them are
// not.
void RestorePieceMarks(std::size_t pieces, IndexKey& key) {
  for (std::size_t mark = pieces + kPiece; mark + 1 < key.size(); mark += kPiece + 1) {
    key[mark] = kPieceGoesOn;
  }
}

// The bytes in the order in which the text of a GUID shows them.
void AppendGuid(Bytes stored, IndexKey& key) {
  RequireSize(stored, kGuidSize);
  std::string bytes(reinterpret_cast<const char*>(stored.data()), kGuidSize);
  std::reverse(bytes.begin(), bytes.begin() + 4);
  std::reverse(bytes.begin() + 4, bytes.begin() + 6);
  std::reverse(bytes.begin() + 6, bytes.begin() + 8);
  AppendPieces(bytes, key);
}

std::size_t Count(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

bool HasKnownKeys(ColumnType type, bool descending) {
  switch (type) {
    case ColumnType::kBoolean:
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kComplex:
    case ColumnType::kBigInt:
    case ColumnType::kCurrency:
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDateTime:
    case ColumnType::kText:
    case ColumnType::kBinary:
      return true;
    case ColumnType::kGuid:
      return !descending;
    default:
      return false;
  }
}

}  // namespace

IndexKeyEncoder::IndexKeyEncoder(const TableDefinition& table, const PhysicalIndex& index,
                                 const TextCodec& codec)
    : codec_(codec), leaves_out_nulls_((index.flags & kIndexLeavesOutNulls) != 0) {
  for (const PhysicalIndex::Part& part : index.parts) {
    const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                     [&](const auto& c) { return c.number == part.column_number; });
    if (column == table.columns.end()) {
      throw NotEncodable("the index is over a column that the table does not have");
    }
    if (!HasKnownKeys(column->type, part.descending)) {
      throw NotEncodable("the keys of column '" + column->name + "' of type " +
                         std::to_string(static_cast<int>(column->type)) +
                         (part.descending ? ", descending," : "") + " are not known");
    }
    const bool text = column->type == ColumnType::kText;
    const SortOrder* const order = text ? SortOrder::Find(column->sort_order) : nullptr;
    if (text && order == nullptr) {
      throw NotEncodable("the sort order " + std::to_string(column->sort_order & 0xFFFF) +
                         " version " + std::to_string(column->sort_order >> 24) + " of column '" +
                         column->name + "' is not known");
    }
    columns_.push_back(static_cast<std::size_t>(column - table.columns.begin()));
    parts_.push_back({column->type, part.descending, order, column->name});
  }
}

void IndexKeyEncoder::Encode(std::span<const StoredField> fields, IndexKey& key) {
  key.clear();
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    try {
      AppendField(parts_[i], fields[i], key);
    } catch (const NotEncodable& reason) {
      throw NotEncodable("column '" + std::string(parts_[i].name) + "': " + reason.what());
    }
  }
}

bool IndexKeyEncoder::Includes(std::span<const StoredField> fields) const {
  if (!leaves_out_nulls_) return true;
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    if (fields[i].present || parts_[i].type == ColumnType::kBoolean) return true;
  }
  return false;
}

void IndexKeyEncoder::AppendText(const Part& part, Bytes stored, IndexKey& key) {
  const std::string_view text = codec_.Decode(stored, text_);
  // U+FFFD is also what half a surrogate pair is read as, whose codes are not known.
  const std::string_view bytes(reinterpret_cast<const char*>(stored.data()), stored.size());
  const std::size_t replaced = Count(text, "\xEF\xBF\xBD");
  if (replaced > 0 && replaced > Count(bytes, "\xFD\xFF")) {
    throw NotEncodable("half a character beyond U+FFFF has no sort codes");
  }
  part.order->AppendText(text, key);
}

void IndexKeyEncoder::AppendField(const Part& part, const StoredField& field, IndexKey& key) {
  const std::size_t start = key.size();
  const bool null = !field.present && part.type != ColumnType::kBoolean;
  key += null ? kAscendingNull : kAscendingValue;
  if (!null) {
    switch (part.type) {
      case ColumnType::kBoolean:
        key += static_cast<char>(field.present ? 0 : 0xFF);
        break;
      case ColumnType::kByte:
        AppendReversed(field.bytes, 1, key);
        break;
      case ColumnType::kInteger:
        AppendSigned(field.bytes, 2, key);
        break;
      case ColumnType::kLong:
      case ColumnType::kComplex:
        AppendSigned(field.bytes, 4, key);
        break;
      case ColumnType::kBigInt:
      case ColumnType::kCurrency:
        AppendSigned(field.bytes, 8, key);
        break;
      case ColumnType::kSingle:
        AppendFloating(field.bytes, 4, key);
        break;
      case ColumnType::kDouble:
      case ColumnType::kDateTime:
        AppendFloating(field.bytes, 8, key);
        break;
      case ColumnType::kText:
        AppendText(part, field.bytes, key);
        break;
      case ColumnType::kGuid:
        AppendGuid(field.bytes, key);
        break;
      default:
        AppendPieces({reinterpret_cast<const char*>(field.bytes.data()), field.bytes.size()}, key);
    }
  }
  if (!part.descending) return;
  Invert(key, start);
  if (!null && part.type == ColumnType::kText) key += '\0';
  if (!null && part.type == ColumnType::kBinary) RestorePieceMarks(start + 1, key);
}

}  // namespace tenora::access
