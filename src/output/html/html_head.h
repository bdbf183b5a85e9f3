// The head of a letter: its colours, its fonts, and whether it has list tables.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tenora::html {

class ColourTable {
 public:
  ColourTable() = default;
  explicit ColourTable(std::string_view group);

  // "RRGGBB" for a number from 1, else empty. Only entries that name a red part count, so the
  // automatic colour at the start has no number.
  std::string_view Find(std::int32_t number) const;

 private:
  std::string digits_;  // six for each entry
};

class FontTable {
 public:
  FontTable() = default;
  explicit FontTable(std::string_view group);

  // The face name, ready for an attribute in double quotes; null outside the table.
  const std::string* Find(std::int32_t number) const;

 private:
  std::unordered_map<std::int32_t, std::string> faces_;
};

// What a document says ahead of its text.
struct Head {
  ColourTable colours;
  FontTable fonts;
  bool is_list_document = false;
};

// Cuts the groups of the head out of a document without its outer braces.
Head TakeHead(std::string& rtf);

}  // namespace tenora::html
