#include "platform/access/check/key_list.h"

#include <algorithm>
#include <tuple>

namespace tenora::access {

KeyList::KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec)
    : table_(table) {
  try {
    encoder_.emplace(table, index, codec);
    fields_.resize(encoder_->columns().size());
  } catch (const NotEncodable& reason) {
    reason_ = reason.what();
  }
}

void KeyList::Add(RowPointer home, const Row& row) {
  if (!encoder_) {
    unkeyed_.push_back(home);
    return;
  }
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
    entry.row = home;
    entry.has_null = has_null;
    entries_.push_back(std::move(entry));
  } catch (const NotEncodable& reason) {
    if (reason_.empty()) reason_ = reason.what();
    unkeyed_.push_back(home);
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
