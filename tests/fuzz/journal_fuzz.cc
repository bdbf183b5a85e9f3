// Decodes any bytes as a journal; a complete journal has the same size when encoded again.
#include <cstdint>
#include <cstdlib>

#include "platform/access/storage/journal.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tenora::access;
  const Bytes bytes(reinterpret_cast<const std::byte*>(data), size);
  Journal journal;
  if (DecodeJournal(bytes, journal)) {
    const std::vector<std::byte> again = EncodeJournal(journal);
    if (again.size() != size) std::abort();
  }
  return 0;
}
