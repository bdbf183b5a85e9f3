// Errors about the content of a file. The readers of single structures know the page and the fault
// but neither file nor table; they raise Corruption, which a caller that knows both turns into the
// RuntimeError that other modules see.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/access/engine_error.h"
#include "platform/runtime/error.h"

namespace tenora::access {

// Also raised when the system cannot read a page; `number` is then kDiskOrNetworkError.
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

// The error for corruption found in `table` of the file; an empty name leaves the table out.
RuntimeError CorruptionError(const Corruption& corruption, const std::filesystem::path& file,
                             std::string_view table);

// "Unrecognized database format '…/x.mdb'." followed by the reason.
RuntimeError UnrecognizedFormat(const std::filesystem::path& file, std::string_view reason);

// Runs `step`; an error for any corruption it finds names file and table.
template <typename Step>
auto NamingCorruption(const std::filesystem::path& file, std::string_view table, Step step) {
  try {
    return step();
  } catch (const Corruption& corruption) {
    throw CorruptionError(corruption, file, table);
  }
}

}  // namespace tenora::access
