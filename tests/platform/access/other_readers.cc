#include "platform/access/other_readers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "platform/runtime/format.h"
#include "support/test_files.h"

namespace tenora::test {
namespace {

using access::ColumnType;
using Record = std::vector<std::string>;

constexpr const char* kNull = "<null>";

std::vector<Record> ParseCsv(const std::string& text) {
  std::vector<Record> records(1);
  std::string field;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"' && quoted && i + 1 < text.size() && text[i + 1] == '"') {
      field += text[++i];
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && (c == ',' || c == '\n')) {
      records.back().push_back(std::exchange(field, {}));
      if (c == '\n') records.emplace_back();
    } else {
      field += c;
    }
  }
  records.pop_back();
  return records;
}

std::string Hex(const std::vector<std::byte>& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::byte b : bytes) {
    text += kDigits[std::to_integer<unsigned>(b) >> 4];
    text += kDigits[std::to_integer<unsigned>(b) & 15];
  }
  return text;
}

void ExpectSameField(const access::Column& column, access::RowCursor& rows, std::size_t i,
                     const std::string& exported) {
  SCOPED_TRACE("column " + column.name);
  if (column.type == ColumnType::kBoolean) {
    EXPECT_EQ(rows.Boolean(i) ? "1" : "0", exported);
    return;
  }
  const Value value = rows.Field(i);
  // mdb-export prints empty text and null alike.
  EXPECT_EQ(IsNull(value) || TextOf(value).empty(), exported == kNull);
  if (exported == kNull) return;
  switch (column.type) {
    case ColumnType::kDateTime: {
      const Date date = std::get<Date>(value);
      if (date.Year() >= 1900) {
        EXPECT_EQ(FormatDate(date, "yyyy-mm-dd hh:nn:ss"), exported);
      }
      break;
    }
    case ColumnType::kSingle:
      EXPECT_FLOAT_EQ(static_cast<float>(std::get<double>(value)),
                      std::strtof(exported.c_str(), nullptr));
      break;
    case ColumnType::kDouble:
      EXPECT_DOUBLE_EQ(std::get<double>(value), std::strtod(exported.c_str(), nullptr));
      break;
    case ColumnType::kCurrency:
      EXPECT_EQ(std::get<Currency>(value).ToText(),
                Currency::FromDouble(std::strtod(exported.c_str(), nullptr)).ToText());
      break;
    case ColumnType::kDecimal:
      EXPECT_EQ(rows.Text(i), exported);
      break;
    case ColumnType::kGuid: {
      // Its text in hexadecimal, like everything binary; mdb-export omits the last dash.
      std::string text = std::get<std::string>(value);
      text.erase(text.rfind('-'), 1);
      const auto bytes = std::as_bytes(std::span(text));
      EXPECT_EQ(Hex({bytes.begin(), bytes.end()}), exported);
      break;
    }
    case ColumnType::kBinary:
    case ColumnType::kOle:
      EXPECT_EQ(Hex(std::get<std::vector<std::byte>>(value)), exported);
      break;
    default:
      EXPECT_EQ(TextOf(value), exported);
  }
}

bool IsKnownToOthers(ColumnType type) {
  return type != ColumnType::kBigInt && type != ColumnType::kDateTimeExtended &&
         type != ColumnType::kComplex;
}

// Other readers visit moved rows where they are now. If the first column has a different text in
// each row, the records are brought into this reader's order by it.
void SortAsOurs(const access::Table& table, std::vector<Record>& records) {
  if (table.columns().front().type != ColumnType::kText) return;
  std::map<std::string, std::size_t> order;
  std::size_t count = 0;
  for (const auto rows = table.Rows(); rows->Next(); ++count) {
    order.emplace(rows->Text(0), count);
  }
  if (order.size() < count) return;
  std::stable_sort(records.begin() + 1, records.end(),
                   [&](const Record& left, const Record& right) {
                     return order[left.at(0)] < order[right.at(0)];
                   });
}

void ExpectSame(const access::Table& table, const ProcessResult& result) {
  ASSERT_EQ(result.status, 0) << result.errors;
  std::vector<Record> records = ParseCsv(result.output);
  ASSERT_FALSE(records.empty());
  SortAsOurs(table, records);
  std::size_t record = 1;  // after the header
  for (const auto rows = table.Rows(); rows->Next(); ++record) {
    SCOPED_TRACE("row " + std::to_string(record));
    ASSERT_LT(record, records.size());
    ASSERT_EQ(records[record].size(), table.columns().size());
    for (std::size_t i = 0; i < table.columns().size(); ++i) {
      const access::Column& column = table.columns()[i];
      ASSERT_EQ(records[0][i], column.name);
      if (IsKnownToOthers(column.type)) ExpectSameField(column, *rows, i, records[record][i]);
    }
  }
  EXPECT_EQ(record, records.size());
}

// Where scripts/test.sh installs it.
std::filesystem::path MdbReaderModules() { return SourceDir() / "build/mdb-reader/node_modules"; }

}  // namespace

bool HasMdbTools() { return RunProcess({"mdb-export", "--version"}).status == 0; }

void ExpectSameAsMdbExport(const access::DatabaseFile& database, const access::Table& table) {
  SCOPED_TRACE("mdb-export, table " + table.name());
  ExpectSame(table, RunProcess({"mdb-export", "-D", "%Y-%m-%d", "-T", "%Y-%m-%d %H:%M:%S", "-0",
                                kNull, "-b", "hex", database.path().string(), table.name()}));
}

std::string WhyNoMdbReader() {
  if (RunProcess({"node", "--version"}).status != 0) return "node is not installed";
  if (std::filesystem::exists(MdbReaderModules() / "mdb-reader")) return {};
  return "mdb-reader is not in " + MdbReaderModules().string() + ": scripts/test.sh installs it";
}

void ExpectSameAsMdbReader(const access::DatabaseFile& database, const access::Table& table) {
  SCOPED_TRACE("mdb-reader, table " + table.name());
  const auto script = SourceDir() / "tests/platform/access/mdb_reader/export.mjs";
  ExpectSame(table, RunProcess({"node", script.string(), MdbReaderModules().string(),
                                database.path().string(), table.name()}));
}

}  // namespace tenora::test
