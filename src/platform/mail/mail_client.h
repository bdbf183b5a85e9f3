// The desktop's mail program: a compose window with everything filled in, nothing sent.
#pragma once

#include <filesystem>

#include "platform/mail/message.h"
#include "platform/runtime/error.h"

namespace tenora::mail {

// Neither Thunderbird nor the desktop's opener is installed, or the one there found no way to show
// the message; the description says what to do.
class NoMailClient : public RuntimeError {
 public:
  static constexpr int kNumber = 429;
  explicit NoMailClient(const std::string& reason);
};

// Opens Thunderbird's compose window where `thunderbird` is on the path, else hands a draft file to
// the desktop's own handler (`xdg-open`). The body is in a file under `scratch_folder` (made when
// missing, open to its owner only), which stays a week for the mail program to read. Raises
// NoMailClient (429) when neither program is installed or the one there fails within seconds, 53,
// 70 or 75 when the file cannot be written or the program cannot be started. A program that keeps
// running is not waited for.
void ComposeInMailClient(const Message& message, const std::filesystem::path& scratch_folder);

}  // namespace tenora::mail
