// The tables at the head of a letter: how their groups are cut out, the colours and the fonts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tenora::html {

// Whether the source holds `sign` ("\list\") anywhere; an escaped backslash starts none.
bool HasControl(std::string_view source, std::string_view sign);

// Takes the group of the first control word `word` ("\fonttbl") out of the source and returns it,
// braces included: empty when the word does not occur or stands in no group. A group that is never
// closed goes to the end.
std::string CutGroup(std::string& source, std::string_view word);

class ColourTable {
 public:
  ColourTable() = default;
  explicit ColourTable(std::string_view group);

  // "RRGGBB" for a number from 1, else empty. Only entries that name a red part count, so the
  // automatic colour at the start takes no place.
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

}  // namespace tenora::html
