// What all the checks share.
#pragma once

#include "platform/access/check/check_report.h"
#include "platform/access/check/page_ledger.h"
#include "platform/access/format/text_codec.h"

namespace tenora::access {

struct CheckContext {
  const PageFile& file;
  const TextCodec& codec;
  CheckReport& report;
  PageLedger& ledger;
};

// A data page's own count of its free bytes, against what its rows leave. Raises Corruption for a
// row that does not lie within the page.
void CheckFreeBytes(const CheckContext& context, const FindingPlace& place, const PageBuffer& page,
                    const DataPage& data);

}  // namespace tenora::access
