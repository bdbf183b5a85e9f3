#include "startup/text_table.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>

#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/csv_field.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

void PrintAligned(const TextTable& table, std::ostream& output) {
  std::vector<std::vector<std::string>> lines(1);
  for (const TextColumn& column : table.columns) lines[0].push_back(column.name);
  lines.insert(lines.end(), table.rows.begin(), table.rows.end());
  std::vector<std::size_t> widths(table.columns.size());
  for (const auto& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], WidthOf(line[i]));
  }
  for (const auto& cells : lines) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string gap(widths[i] - WidthOf(cells[i]), ' ');
      line += (i == 0 ? "" : "  ") + (table.columns[i].number ? gap + cells[i] : cells[i] + gap);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output << line << '\n';
  }
}

void PrintCsv(const TextTable& table, std::ostream& output) {
  const auto print = [&](std::size_t fields, auto&& field) {
    std::string line;
    for (std::size_t i = 0; i < fields; ++i) line += (i == 0 ? "" : ",") + CsvField(field(i));
    // A line of one empty field would be no line to some readers.
    output << (line.empty() ? "\"\"" : line) << "\r\n";
  };
  print(table.columns.size(), [&](std::size_t i) { return table.columns[i].name; });
  for (const auto& row : table.rows) print(row.size(), [&](std::size_t i) { return row[i]; });
}

void PrintJson(const TextTable& table, std::ostream& output) {
  output << '[';
  for (std::size_t row = 0; row < table.rows.size(); ++row) {
    output << (row == 0 ? "\n  {" : ",\n  {");
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      output << (i == 0 ? "" : ", ") << JsonText(table.columns[i].name) << ": "
             << table.rows[row][i];
    }
    output << '}';
  }
  output << (table.rows.empty() ? "]\n" : "\n]\n");
}

}  // namespace

ListingFormat ListingFormatOf(std::string_view name) {
  if (name == "csv") return ListingFormat::kCsv;
  return name == "json" ? ListingFormat::kJson : ListingFormat::kTable;
}

std::size_t WidthOf(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const auto c = static_cast<UChar32>(TakeCodePoint(text));
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK ||
        category == U_FORMAT_CHAR) {
      continue;
    }
    const int east = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    width += east == U_EA_WIDE || east == U_EA_FULLWIDTH ? 2 : 1;
  }
  return width;
}

std::string JsonText(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7F) {
      constexpr std::string_view kDigits = "0123456789abcdef";
      quoted += "\\u00";
      quoted += kDigits[c >> 4];
      quoted += kDigits[c & 15];
    } else {
      AppendUtf8(quoted, c);
    }
  }
  return quoted += '"';
}

void PrintTextTable(const TextTable& table, ListingFormat format, std::ostream& output) {
  switch (format) {
    case ListingFormat::kTable:
      return PrintAligned(table, output);
    case ListingFormat::kCsv:
      return PrintCsv(table, output);
    case ListingFormat::kJson:
      return PrintJson(table, output);
  }
}

void TableCells::Text(const std::string& text) {
  Add(format_ == ListingFormat::kTable  ? TerminalLine(text)
      : format_ == ListingFormat::kJson ? JsonText(text)
                                        : text);
}

void TableCells::Decimal(double number) {
  constexpr int kDecimals = 2;
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                 std::chars_format::fixed, kDecimals);
  if (end.ec != std::errc()) return Nothing();
  Add(std::string(digits.data(), end.ptr));
}

}  // namespace tenora
