// Checks any bytes as a database: gives findings or a RuntimeError in bounded time and memory.
#include <cstddef>
#include <cstdint>

#include "platform/access/check.h"
#include "platform/runtime/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* bytes = reinterpret_cast<const std::byte*>(data);
  try {
    for (const auto& finding : tenora::access::CheckDatabase({bytes, bytes + size}, "fuzz.mdb")) {
      if (finding.Text().empty()) __builtin_trap();
    }
  } catch (const tenora::RuntimeError&) {
  }
  return 0;
}
