// Reads any bytes as a database: gives rows or a RuntimeError in bounded time and memory.
#include <cstddef>
#include <cstdint>

#include "platform/access/database_file.h"
#include "platform/access/read_everything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* bytes = reinterpret_cast<const std::byte*>(data);
  try {
    const auto database =
        tenora::access::DatabaseFile::OpenBytes({bytes, bytes + size}, "fuzz.mdb");
    tenora::test::ReadEverything(*database, 500);
  } catch (const tenora::RuntimeError&) {
  }
  return 0;
}
