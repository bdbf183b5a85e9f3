// A table on standard output: for people, for spreadsheets and for programs.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
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

}  // namespace tenora
