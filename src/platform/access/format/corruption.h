// What is wrong in a file, said where it is found. The readers of single structures know a page and
// a fault but neither file nor table; they raise Corruption, and whoever does know them turns it
// into the RuntimeError that callers of this room see.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/access/engine_error.h"
#include "platform/runtime/error.h"

namespace tenora::access {

class Corruption : public std::runtime_error {
 public:
  Corruption(std::uint32_t page, const std::string& what, int number = engine_error::kCorruptFile)
      : std::runtime_error(what), page_(page), number_(number) {}
  std::uint32_t page() const { return page_; }
  int number() const { return number_; }

 private:
  std::uint32_t page_;
  int number_;
};

// The error for damage met in `table` of the file; an empty name leaves the table out.
RuntimeError CorruptionError(const Corruption& corruption, const std::filesystem::path& file,
                             std::string_view table);

// "Unrecognized database format '…/x.mdb'." with the reason behind it.
RuntimeError UnrecognizedFormat(const std::filesystem::path& file, std::string_view reason);

// Runs `step` and names file and table in whatever damage it meets.
template <typename Step>
auto NamingCorruption(const std::filesystem::path& file, std::string_view table, Step step) {
  try {
    return step();
  } catch (const Corruption& corruption) {
    throw CorruptionError(corruption, file, table);
  }
}

}  // namespace tenora::access
