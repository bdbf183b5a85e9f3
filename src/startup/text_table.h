// A table on standard output: for people, for spreadsheets and for programs.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tenora {

enum class ListingFormat {
  kTable,  // for people: aligned, amounts and dates by locale
  kCsv,    // RFC 4180 with a header; numbers with a point, dates as 2026-11-21
  kJson,   // an array of objects; what is not known is null
};
// Of "table", "csv", "json"; kTable for any other text.
ListingFormat ListingFormatOf(std::string_view name);

struct TextColumn {
  std::string name;
  bool number = false;  // aligned on the right
};

struct TextTable {
  std::vector<TextColumn> columns;
  // A cell for each column, as the format has it: for kTable one line without control characters,
  // for kJson a JSON value.
  std::vector<std::vector<std::string>> rows;
};

// The columns of a terminal that a text takes.
std::size_t WidthOf(std::string_view text);
std::string JsonText(std::string_view text);
void PrintTextTable(const TextTable& table, ListingFormat format, std::ostream& output);

// A table whose cells are given as values, row by row.
class TableCells {
 public:
  TableCells(std::vector<TextColumn> columns, ListingFormat format)
      : table_{std::move(columns), {}}, format_(format) {}

  bool for_people() const { return format_ == ListingFormat::kTable; }
  void BeginRow() { table_.rows.emplace_back(); }
  void Text(const std::string& text);
  void Number(std::int64_t number) { Add(std::to_string(number)); }
  // With two decimals.
  void Decimal(double number);
  void Nothing() { Add(format_ == ListingFormat::kJson ? "null" : ""); }
  void Print(std::ostream& output) const { PrintTextTable(table_, format_, output); }

 private:
  void Add(std::string cell) { table_.rows.back().push_back(std::move(cell)); }

  TextTable table_;
  ListingFormat format_;
};

}  // namespace tenora
