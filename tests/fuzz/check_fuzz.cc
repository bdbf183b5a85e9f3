// Checks any bytes as a database: gives findings or a RuntimeError in bounded time and memory.
#include <cstddef>
#include <cstdint>

#include "platform/access/check.h"
#include "platform/runtime/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* bytes = reinterpret_cast<const std::byte*>(data);
  try {
    // Each table in memory, and each as one too large for that.
    for (const std::size_t pages : {4096, 0}) {
      for (const auto& finding : tenora::access::CheckDatabase(
               {bytes, bytes + size}, "fuzz.mdb",
               {.pages_with_keys = pages, .rows_of_part = 10, .related_keys = 16})) {
        if (finding.Text().empty()) __builtin_trap();
      }
    }
  } catch (const tenora::RuntimeError&) {
  }
  return 0;
}
