#include "platform/access/check/key_list.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace tenora::access {

namespace {

std::uint64_t Mixed(std::uint64_t number) {
  number = (number ^ number >> 32) * 0x9E3779B97F4A7C15;
  number = (number ^ number >> 29) * 0xBF58476D1CE4E5B9;
  return number ^ number >> 32;
}

std::uint64_t Packed(RowPointer row) { return std::uint64_t{row.page} << 8 | row.row; }

}  // namespace

void KeySum::Add(std::string_view key, RowPointer row) {
  ++count;
  sum += Mixed(std::hash<std::string_view>()(key) + Mixed(Packed(row)));
}

bool RowPart::Has(std::string_view key, RowPointer row) const {
  if (count == 1) return true;
  const std::uint64_t hash =
      by == By::kKey ? std::hash<std::string_view>()(key) : Mixed(Packed(row));
  return hash % count == number;
}

KeyList::KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec,
                 Keep keep, RowPart part)
    : table_(table), keep_(keep), part_(part) {
  try {
    encoder_.emplace(table, index, codec);
    fields_.resize(encoder_->columns().size());
  } catch (const NotEncodable& reason) {
    reason_ = reason.what();
  }
}

KeyList::KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec,
                 Handler handler)
    : KeyList(table, index, codec, Keep::kSum) {
  handler_ = std::move(handler);
}

void KeyList::AddUnkeyed(RowPointer home) {
  if (!part_.Has({}, home)) return;
  ++unkeyed_count_;
  if (!is_sum()) unkeyed_.push_back(home);
}

void KeyList::Add(RowPointer home, const Row& row) {
  if (part_.by == RowPart::By::kRow && !part_.Has({}, home)) return;
  if (!encoder_) return AddUnkeyed(home);
  bool has_null = false;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const std::size_t column = encoder_->columns()[i];
    const Column& c = table_.columns[column];
    fields_[i].present = row.HasValue(c.number);
    fields_[i].bytes = c.type == ColumnType::kBoolean ? Bytes() : StoredBytes(row, table_, column);
    has_null = has_null || (!fields_[i].present && c.type != ColumnType::kBoolean);
  }
  if (!encoder_->Includes(fields_)) return;
  try {
    Entry entry;
    encoder_->Encode(fields_, entry.key);
    if (!part_.Has(entry.key, home)) return;
    if (handler_) return handler_(entry.key, home, has_null);
    sum_.Add(entry.key, home);
    if (is_sum()) return;
    entry.row = home;
    entry.has_null = has_null;
    entries_.push_back(std::move(entry));
  } catch (const NotEncodable& reason) {
    if (reason_.empty()) reason_ = reason.what();
    AddUnkeyed(home);
  }
}

void KeyList::Sort() {
  const auto by_place = [](RowPointer pointer) { return std::tuple(pointer.page, pointer.row); };
  std::sort(entries_.begin(), entries_.end(), [&](const Entry& left, const Entry& right) {
    const int order = left.key.compare(right.key);
    return order != 0 ? order < 0 : by_place(left.row) < by_place(right.row);
  });
  std::sort(unkeyed_.begin(), unkeyed_.end(),
            [&](RowPointer left, RowPointer right) { return by_place(left) < by_place(right); });
}

}  // namespace tenora::access
