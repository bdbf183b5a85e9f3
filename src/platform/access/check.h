// The checker: reads every page, table, index, long value and usage map of a file and says where
// they disagree. It changes nothing.
//
//   pages      each is owned once, or free; a page's own free bytes are what its rows leave
//   tables     the definition is possible; as many rows as it says; automatic numbers behind the
//              last one given; every overflow row and long value is whole and reached once
//   indexes    in order, linked, each entry with its row and each row with its entry, with exactly
//              the key that the row gives; unique ones have no key twice
//   relations  no row refers to a row that is missing
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tenora::access {

struct Finding {
  enum class Kind {
    kFault,
    kNotChecked,  // no fault: the file uses what the checker does not know
  };
  Kind kind = Kind::kFault;
  std::string table, index;  // empty: not of one
  std::optional<std::uint32_t> page;
  std::optional<std::uint32_t> row;  // on the page
  std::string what;
  std::string remedy;  // what a technician should do; empty when nothing

  // "table 'revenues', index 'PrimaryKey', page 41, row 3: the key … Compact and repair …"
  std::string Text() const;
};

// Everything found, in the file's order of pages, tables and relationships; nothing for a healthy
// file. Many findings about one table or index are cut off with a count of the rest. Raises
// RuntimeError as DatabaseFile::Open for what is no database, or one that cannot be read at all.
std::vector<Finding> CheckDatabase(const std::filesystem::path& path);

// The same for a file whose bytes are in memory; `name` stands for its path in messages.
std::vector<Finding> CheckDatabase(std::vector<std::byte> bytes, const std::filesystem::path& name);

}  // namespace tenora::access
