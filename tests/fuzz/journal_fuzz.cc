// Any bytes as a journal: it is whole or it is not, and what is whole comes out as it went in.
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
