// The monthly error log in the program folder: "errNov26.log".
#pragma once

#include <filesystem>
#include <string_view>

#include "platform/runtime/date.h"

namespace tenora {

// Appends "21/11/26 09:30:00", a blank, the message and a line break (CR LF) in one write, so that
// programs running at once do not mix their lines. A failure is ignored: there is nobody left to
// tell.
void AppendToErrorLog(const std::filesystem::path& program_folder, Date now,
                      std::string_view message);

}  // namespace tenora
