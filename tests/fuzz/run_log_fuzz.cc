// Any bytes as a run log: refused with an error, or read so that its head written again says the
// same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "letters/generate/run_log_format.h"
#include "platform/runtime/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tenora;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  LoggedRun run;
  try {
    run = ReadRunLog(text.substr(0, WholeLines(text)));
  } catch (const RuntimeError& error) {
    if (error.number() != error_number::kInvalidFileFormat) std::abort();
    return 0;
  }
  const std::string head = RunLogHead(run, Date::FromCalendar(2026, 11, 21));
  const LoggedRun again = ReadRunLog(head);
  const bool same = again.request.recipients == run.request.recipients &&
                    again.request.answers == run.request.answers &&
                    again.request.template_name == run.request.template_name;
  if (!same) std::abort();
  return 0;
}
