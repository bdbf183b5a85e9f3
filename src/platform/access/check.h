// The integrity checker: reads every page, table, index, long value and usage map of a file and
// reports where they disagree. It changes nothing.
//
//   pages          each is owned exactly once, or free; its count of free bytes is right
//   tables         the definition is valid; the row count is right; no AutoNumber value exceeds the
//                  last one recorded; every overflow row and long value is complete and referenced
//                  exactly once
//   indexes        sorted and linked; each entry has its row and each row its entry, with the key
//                  that the row's values give; unique indexes have no duplicate key
//   relationships  no row refers to a row that is missing
#pragma once

#include <chrono>
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
    kNotChecked,  // not a fault: the file uses something that the checker does not know
    kNote,        // not a fault: what programs leave behind in sound files
  };
  Kind kind = Kind::kFault;
  std::string table, index;  // empty when the finding is not about one
  std::optional<std::uint32_t> page;
  std::optional<std::uint32_t> row;  // slot on the page
  std::string what;
  std::string remedy;  // what a technician should do; empty when nothing

  // One line: "table 'revenues', index 'PrimaryKey', page 41, row 3: the key … Compact and …"
  std::string Text() const;
};

// How much of a table is kept in memory while its indexes are compared with its rows. Of a table of
// more pages only sums over its keys are; where they differ, its rows are read again part by part
// to find those concerned. Of the keys of relationships only hashes are, eight bytes each, and of
// more than `related_keys` different ones a part at a time.
struct CheckMemory {
  std::size_t pages_with_keys = 4096;
  std::uint64_t rows_of_part = 250'000;
  std::size_t related_keys = 8'000'000;
};

// Takes the lock of readers, so that none of our writers is in the middle of a change. Where
// another program changes the file meanwhile, it is checked again, a few times; if that does not
// help, a finding says so. All findings, in the order in which the tables, relationships and pages
// are checked; none for a healthy file. Findings about one table or index beyond a limit are only
// counted. Raises RuntimeError like DatabaseFile::Open for a file that is not a database or cannot
// be read at all, and 3218 when a writer takes longer than the time given.
std::vector<Finding> CheckDatabase(
    const std::filesystem::path& path,
    std::chrono::milliseconds wait_for_writers = std::chrono::seconds(10));

// The same for a file whose bytes are in memory; `name` is used as its path in messages.
std::vector<Finding> CheckDatabase(std::vector<std::byte> bytes, const std::filesystem::path& name,
                                   const CheckMemory& memory = {});

}  // namespace tenora::access
