#include "platform/access/read/row_cursor.h"

#include <charconv>
#include <type_traits>

#include "platform/access/format/calculated_value.h"
#include "platform/access/format/field_codec.h"
#include "platform/access/format/row.h"
#include "platform/access/read/long_value.h"
#include "platform/access/read/usage_map.h"
#include "platform/runtime/conversion.h"

namespace tenora::access {
namespace {

bool HasAnyLength(ColumnType type) {
  return type == ColumnType::kText || type == ColumnType::kMemo || type == ColumnType::kBinary ||
         type == ColumnType::kOle;
}

// A pointer to another pointer does occur; more than a few in sequence are a loop.
constexpr int kMostOverflows = 8;

// Reads the fields of the current row; a derived class moves from row to row.
class StoredRowCursor : public PlacedCursor {
 public:
  explicit StoredRowCursor(std::shared_ptr<const TableData> table)
      : table_(std::move(table)), codec_(table_->file->header()), long_values_(*table_->file) {}

  bool Next() override {
    return Guarded([&] { return Advance(); });
  }

  RowId Id() const override { return {place().page, place().row}; }
  RowPointer place() const override { return {page_.number, static_cast<std::uint8_t>(slot_ - 1)}; }

  bool IsNull(std::size_t column) const override {
    const Column& c = Columns()[column];
    if (c.type == ColumnType::kBoolean) return false;
    if (!row_.HasValue(c.number)) return true;
    if (!c.calculated || HasAnyLength(c.type)) return false;
    return Guarded([&] { return IsCalculatedNull(StoredBytes(row_, table_->definition, column)); });
  }

  bool Boolean(std::size_t column) const override {
    const Column& c = Columns()[column];
    if (!c.calculated) return row_.HasValue(c.number);
    return Guarded([&] {
      const access::Bytes stored = Stored(column);
      return !stored.empty() && stored[0] != std::byte{0};
    });
  }

  std::int64_t Integer(std::size_t column) const override {
    return Guarded([&]() -> std::int64_t {
      const Column& c = Columns()[column];
      switch (c.type) {
        case ColumnType::kByte:
          return Number<std::uint8_t>(column);
        case ColumnType::kInteger:
          return Number<std::int16_t>(column);
        case ColumnType::kLong:
        case ColumnType::kComplex:
          return Number<std::int32_t>(column);
        case ColumnType::kBigInt:
          return Number<std::int64_t>(column);
        default:
          return 0;
      }
    });
  }

  std::int64_t TenThousandths(std::size_t column) const override {
    return Guarded([&]() -> std::int64_t {
      return Columns()[column].type == ColumnType::kCurrency ? Number<std::int64_t>(column) : 0;
    });
  }

  double Double(std::size_t column) const override {
    return Guarded([&]() -> double {
      switch (Columns()[column].type) {
        case ColumnType::kSingle:
          return Number<float>(column);
        case ColumnType::kDouble:
        case ColumnType::kDateTime:
          return Number<double>(column);
        case ColumnType::kDateTimeExtended:
          return ExtendedDate(column);
        default:
          return 0;
      }
    });
  }

  std::string_view Text(std::size_t column) override {
    return Guarded([&]() -> std::string_view {
      const Column& c = Columns()[column];
      switch (c.type) {
        case ColumnType::kText:
          return codec_.Decode(Stored(column), text_);
        case ColumnType::kMemo:
          return codec_.Decode(LongValue(column), text_);
        case ColumnType::kGuid:
          if (IsNull(column)) return {};
          return text_ = GuidText(Stored(column, kGuidSize).data());
        case ColumnType::kDecimal:
          if (IsNull(column)) return {};
          if (c.calculated) {
            return text_ = CalculatedDecimalText(Stored(column), row_page_->number);
          }
          return text_ = DecimalText(Stored(column, kDecimalSize).data(), c.scale);
        default:
          return {};
      }
    });
  }

  std::span<const std::byte> Bytes(std::size_t column) override {
    return Guarded([&] {
      return Columns()[column].type == ColumnType::kOle ? LongValue(column) : Stored(column);
    });
  }

 protected:
  const std::vector<Column>& Columns() const override { return table_->definition.columns; }

  // False after the last row.
  virtual bool Advance() = 0;

  void GoTo(std::uint32_t number) {
    slot_ = slots_ = 0;
    row_ = Row();
    table_->file->Read(number, page_);
    if (IsForOtherUse(page_)) return;
    const DataPage data(table_->file->layout(), page_);
    RequireOwner(page_);
    slots_ = data.row_count();
  }

  // Makes the row of that slot the current one; false when a scan skips it.
  bool Enter(std::size_t row) {
    const DataPage::Slot slot = DataPage(table_->file->layout(), page_).Row(row);
    if (slot.hidden) return false;
    row_page_ = &page_;
    SetRow(slot.overflow ? FollowOverflow(slot.bytes) : slot.bytes);
    return true;
  }

  std::size_t slot_ = 0, slots_ = 0;
  PageBuffer page_;

 private:
  template <typename Step>
  std::invoke_result_t<Step> Guarded(Step step) const {
    return NamingCorruption(table_->file->path(), table_->name, step);
  }

  // A table may own pages that are not for rows, or not used yet.
  static bool IsForOtherUse(const PageBuffer& page) {
    const bool blank = page.type() == PageType::kHeader && page.owner() == 0;
    return blank || page.type() == PageType::kIndexNode || page.type() == PageType::kIndexLeaf ||
           page.owner() == kLongValueOwner;
  }

  void RequireOwner(const PageBuffer& page) const {
    if (page.owner() == table_->definition.page) return;
    throw Corruption(page.number, "the page belongs to the table defined on page " +
                                      std::to_string(page.owner()));
  }

  access::Bytes FollowOverflow(access::Bytes pointer) {
    for (int steps = 0; steps < kMostOverflows; ++steps) {
      if (pointer.size() < 4)
        throw Corruption(row_page_->number, "an overflow pointer is too short");
      const RowPointer target = RowPointer::Load(pointer.data());
      table_->file->Read(target.page, overflow_page_);
      const DataPage data(table_->file->layout(), overflow_page_);
      RequireOwner(overflow_page_);
      row_page_ = &overflow_page_;
      const DataPage::Slot slot = data.Row(target.row);
      if (!slot.overflow) return slot.bytes;
      if (slot.hidden) throw Corruption(target.page, "an overflow row is deleted");
      pointer = slot.bytes;
    }
    throw Corruption(row_page_->number, "overflow pointers form a loop");
  }

  void SetRow(access::Bytes bytes) {
    row_ = Row();
    row_ = Row(table_->file->layout(), table_->definition, bytes, row_page_->number);
  }

  // The bytes of a column's value in the row; empty when it is null.
  access::Bytes Stored(std::size_t column) const {
    const access::Bytes stored = StoredBytes(row_, table_->definition, column);
    return Columns()[column].calculated ? CalculatedContent(stored, row_page_->number) : stored;
  }

  // The content of a memo or OLE column.
  access::Bytes LongValue(std::size_t column) {
    const access::Bytes content =
        long_values_.Read(StoredBytes(row_, table_->definition, column), row_page_->number);
    return Columns()[column].calculated ? CalculatedContent(content, row_page_->number) : content;
  }

  access::Bytes Stored(std::size_t column, std::size_t size) const {
    const access::Bytes stored = Stored(column);
    if (stored.size() < size) {
      throw Corruption(row_page_->number, "column '" + Columns()[column].name + "' is too short");
    }
    return stored;
  }

  template <typename T>
  T Number(std::size_t column) const {
    return IsNull(column) ? 0 : Load<T>(Stored(column, sizeof(T)).data());
  }

  double ExtendedDate(std::size_t column) const {
    if (IsNull(column)) return 0;
    double serial = 0;
    if (!ExtendedDateSerial(Stored(column, kExtendedDateSize).data(), serial)) {
      throw Corruption(row_page_->number, "column '" + Columns()[column].name + "' is not a date");
    }
    return serial;
  }

  std::shared_ptr<const TableData> table_;
  TextCodec codec_;
  LongValueReader long_values_;
  PageBuffer overflow_page_;
  const PageBuffer* row_page_ = &page_;  // holds the current row
  Row row_;
  std::string text_;
};

// Scans the pages that the table owns.
class ScanCursor final : public StoredRowCursor {
 public:
  explicit ScanCursor(const std::shared_ptr<const TableData>& table)
      : StoredRowCursor(table), pages_(*table->file, table->definition.owned_pages) {}

 private:
  bool Advance() override {
    for (;;) {
      while (slot_ < slots_) {
        if (Enter(slot_++)) return true;
      }
      const std::uint32_t number = pages_.NextFrom(next_page_);
      if (number == PageBuffer::kNone) return false;
      next_page_ = number + 1;
      GoTo(number);
    }
  }

  UsageMap pages_;
  std::uint32_t next_page_ = 0;
};

// Visits the rows at given places.
class ListCursor final : public StoredRowCursor {
 public:
  ListCursor(std::shared_ptr<const TableData> table, std::vector<RowPointer> places)
      : StoredRowCursor(std::move(table)), places_(std::move(places)) {}

 private:
  bool Advance() override {
    if (next_ == places_.size()) return false;
    const RowPointer place = places_[next_++];
    GoTo(place.page);
    slot_ = place.row + std::size_t{1};
    if (slot_ > slots_ || !Enter(place.row)) {
      throw Corruption(place.page, "there is no row " + std::to_string(place.row));
    }
    return true;
  }

  std::vector<RowPointer> places_;
  std::size_t next_ = 0;
};

}  // namespace

std::unique_ptr<PlacedCursor> OpenCursor(std::shared_ptr<const TableData> table) {
  const TableData& data = *table;
  return NamingCorruption(data.file->path(), data.name,
                          [&] { return std::make_unique<ScanCursor>(std::move(table)); });
}

std::unique_ptr<PlacedCursor> OpenCursorAt(std::shared_ptr<const TableData> table,
                                           std::vector<RowPointer> places) {
  const TableData& data = *table;
  return NamingCorruption(data.file->path(), data.name, [&] {
    return std::make_unique<ListCursor>(std::move(table), std::move(places));
  });
}

Value RowCursor::Field(std::size_t column) {
  if (IsNull(column)) return Null();
  switch (Columns()[column].type) {
    case ColumnType::kBoolean:
      return Boolean(column);
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kBigInt:
    case ColumnType::kComplex:
      return Integer(column);
    case ColumnType::kCurrency:
      return Currency::FromTenThousandths(TenThousandths(column));
    case ColumnType::kSingle:
    case ColumnType::kDouble:
      return Double(column);
    case ColumnType::kDateTime:
    case ColumnType::kDateTimeExtended:
      return Date::FromSerial(Double(column));
    case ColumnType::kText:
    case ColumnType::kMemo:
    case ColumnType::kGuid:
      return std::string(Text(column));
    case ColumnType::kDecimal: {
      std::string_view text = Text(column);
      if (text.find('.') != text.npos) {
        text = text.substr(0, text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) text.remove_suffix(1);
      }
      double number = 0;
      std::from_chars(text.data(), text.data() + text.size(), number);
      if (NumberText(number) != text) return std::string(text);
      return number;
    }
    case ColumnType::kBinary:
    case ColumnType::kOle:
      break;
  }
  const std::span<const std::byte> bytes = Bytes(column);
  return std::vector<std::byte>(bytes.begin(), bytes.end());
}

}  // namespace tenora::access
