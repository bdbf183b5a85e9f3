// What all checks share, and a check that several of them use.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/access/check/check_report.h"
#include "platform/access/check/page_ledger.h"
#include "platform/access/format/text_codec.h"

namespace tenora::access {

struct CheckContext {
  const PageFile& file;
  const TextCodec& codec;
  CheckReport& report;
  PageLedger& ledger;
  std::size_t pages_with_keys;  // as in CheckMemory
  std::uint64_t rows_of_part;
  std::size_t related_keys;
};

// Checks a data page's count of free bytes against its rows. Raises Corruption for a row that
// extends beyond the page.
void CheckFreeBytes(const CheckContext& context, const FindingPlace& place, const PageBuffer& page,
                    const DataPage& data);

}  // namespace tenora::access
