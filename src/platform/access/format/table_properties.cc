#include "platform/access/format/table_properties.h"

#include <algorithm>
#include <array>

#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kWhat = "the properties of the table";
constexpr std::uint16_t kNames = 0x80, kTable = 0, kColumn = 1, kOtherColumn = 2;
constexpr std::size_t kHead = 6;  // of a chunk
constexpr std::size_t kOwnerLength = 4, kEntryLength = 2;

ByteReader Reader(Bytes bytes) { return {bytes, kCataloguePage, kWhat}; }

// The next `length` - `counted` bytes: a stored length includes its own `counted` bytes.
Bytes TakeCounted(ByteReader& reader, std::size_t length, std::size_t counted) {
  if (length < counted) {
    throw Corruption(kCataloguePage, std::string(kWhat) + " have an invalid length");
  }
  return reader.Take(length - counted);
}

class PropertyReader {
 public:
  PropertyReader(const TextCodec& codec, const TableDefinition& table)
      : codec_(codec), table_(table) {
    properties_.columns.resize(table.columns.size());
  }

  TableProperties Read(Bytes stored) {
    ByteReader reader = Reader(stored);
    const Bytes magic = reader.Take(4);
    constexpr std::array<std::byte, 4> kJet4{std::byte{'M'}, std::byte{'R'}, std::byte{'2'}};
    constexpr std::array<std::byte, 4> kJet3{std::byte{'K'}, std::byte{'K'}, std::byte{'D'}};
    if (!std::ranges::equal(magic, kJet4) && !std::ranges::equal(magic, kJet3)) {
      throw Corruption(kCataloguePage, std::string(kWhat) + " do not start with a known signature");
    }
    while (reader.left() > 0) {
      const std::uint32_t length = reader.U32();
      const std::uint16_t type = reader.U16();
      ByteReader chunk = Reader(TakeCounted(reader, length, kHead));
      if (type == kNames) {
        while (chunk.left() > 0) names_.push_back(Text(chunk.Take(chunk.U16())));
      } else if (type == kTable || type == kColumn || type == kOtherColumn) {
        ReadBlock(chunk);
      }
    }
    return std::move(properties_);
  }

 private:
  std::string Text(Bytes stored) const {
    std::string buffer;
    return std::string(codec_.Decode(stored, buffer));
  }

  void ReadBlock(ByteReader& block) {
    const std::uint32_t length = block.U32();
    ByteReader owner_bytes = Reader(TakeCounted(block, length, kOwnerLength));
    const std::string owner =
        owner_bytes.left() > 0 ? Text(owner_bytes.Take(owner_bytes.U16())) : std::string();
    const auto column = std::ranges::find_if(
        table_.columns, [&](const Column& c) { return EqualsNoCase(c.name, owner); });
    while (block.left() > 0) {
      const std::uint16_t entry_length = block.U16();
      ByteReader entry = Reader(TakeCounted(block, entry_length, kEntryLength));
      entry.Skip(2);  // its flag and type
      const std::uint16_t name = entry.U16();
      if (name >= names_.size()) {
        throw Corruption(kCataloguePage, std::string(kWhat) + " refer to a missing name");
      }
      const Bytes value = entry.Take(entry.U16());
      if (owner.empty()) {
        if (names_[name] == "ValidationRule") properties_.validation_rule = Text(value);
      } else if (column != table_.columns.end()) {
        const auto position = static_cast<std::size_t>(column - table_.columns.begin());
        Set(properties_.columns[position], names_[name], value);
      }
    }
  }

  void Set(ColumnProperties& column, std::string_view name, Bytes value) const {
    const bool yes = !value.empty() && value[0] != std::byte{0};
    if (name == "Required") column.required = yes;
    if (name == "AllowZeroLength") column.allow_zero_length = yes;
    if (name == "DefaultValue") column.default_value = Text(value);
    if (name == "ValidationRule") column.validation_rule = Text(value);
    if (name == "ResultType" && !value.empty()) {
      column.result_type = static_cast<ColumnType>(Load8(value.data()));
    }
  }

  const TextCodec& codec_;
  const TableDefinition& table_;
  std::vector<std::string> names_;
  TableProperties properties_;
};

}  // namespace

TableProperties ReadTableProperties(Bytes stored, const TextCodec& codec,
                                    const TableDefinition& table) {
  if (stored.empty()) return {{}, std::vector<ColumnProperties>(table.columns.size())};
  return PropertyReader(codec, table).Read(stored);
}

}  // namespace tenora::access
