// A built database with everything that a table can contain, in every version of the format.
#pragma once

#include <string>

namespace tenora::test {

// Three tables: "all_types" (two rows of values, one of nulls, a deleted one), "long_values" (a
// memo and an OLE column: inline, single, a chain over two pages, null) and "changed" (overflow
// rows, a deleted column, a column added after the first row, an indirect usage map). `version` as
// in the file: 0 Jet 3, 1 Jet 4, 2 to 6 ACE. From version 5 on "all_types" has the types new there.
// The tables may have other names.
struct ShowcaseNames {
  std::string all_types = "all_types", long_values = "long_values", changed = "changed";
};
std::string Showcase(int version, const ShowcaseNames& names = {});

// The content of the chained long value: letters only.
std::string ChainedText();

}  // namespace tenora::test
