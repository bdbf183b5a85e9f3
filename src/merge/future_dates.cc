#include "merge/future_dates.h"

#include <optional>
#include <string>
#include <vector>

#include "merge/merge_codes.h"
#include "platform/dialogs/dialogs.h"
#include "platform/locale/locale.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {

std::optional<Date> FutureDate(std::string code, Date today) {
  code = ReplaceAll(ReplaceAll(std::move(code), kFutureDateStart, ""), kCodeEnd, "");
  const std::vector<std::string> parts = Split(code, ":");
  if (parts.size() < 2) throw StandardError(error_number::kSubscriptOutOfRange);
  const std::int32_t count = ToInt32(parts[0]);
  const std::string& unit = parts[1];
  if (unit == "Days") return today.AddDays(count);
  if (unit == "Weeks") return today.AddDays(std::int64_t{count} * 7);
  if (unit == "Months") return today.AddMonths(count);
  if (unit == "Years") return today.AddYears(count);
  return std::nullopt;
}

bool InsertFutureDates(const MergeTarget& target) {
  const Platform& platform = target.session.platform;
  RichTextBox& editor = target.editor;
  try {
    // An unknown unit takes the value of the code before it, or nothing: deliberate.
    std::string value;
    for (;;) {
      const std::string& source = editor.TextRTF();
      const std::size_t start = source.find(kFutureDateStart);
      if (start == std::string::npos) return true;
      // No code after an unclosed one can be closed either.
      const std::size_t end = source.find(kCodeEnd, start);
      if (end == std::string::npos) return true;
      const std::string code = source.substr(start, end + kCodeEnd.size() - start);
      if (const auto date = FutureDate(code, platform.clock.Today())) {
        value = platform.locale.LongDate(*date);
      }
      editor.SetTextRTF(ReplaceAll(source, code, editor.SourceForm(value)));
    }
  } catch (...) {
    platform.dialogs.Say("Error inserting future date.  Possible incorrect format");
    return false;
  }
}

}  // namespace tenora
