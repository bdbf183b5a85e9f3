#include "platform/access/check/check_context.h"

#include <string>

namespace tenora::access {
namespace {

constexpr std::size_t kDataFreeBytes = 2;

}  // namespace

void CheckFreeBytes(const CheckContext& context, const FindingPlace& place, const PageBuffer& page,
                    const DataPage& data) {
  std::size_t lowest = page.size;
  for (std::size_t row = 0; row < data.row_count(); ++row) {
    lowest -= data.Row(row).bytes.size();
  }
  const std::size_t offsets = context.file.layout().data_row_offsets + 2 * data.row_count();
  const std::size_t free = Load16(&page.bytes[kDataFreeBytes]);
  if (free == lowest - offsets) return;
  context.report.Fault(place, page.number, {},
                       "the page says that " + std::to_string(free) +
                           " bytes are free, but there are " + std::to_string(lowest - offsets),
                       Remedy::kRestore);
}

}  // namespace tenora::access
