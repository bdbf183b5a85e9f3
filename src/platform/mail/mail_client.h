// The desktop's mail program: a compose window with everything filled in, nothing sent.
#pragma once

#include <filesystem>

#include "platform/mail/message.h"
#include "platform/runtime/error.h"

namespace tenora::mail {

// Neither Thunderbird nor the desktop's opener is installed.
class NoMailClient : public RuntimeError {
 public:
  NoMailClient();
};

// Opens Thunderbird's compose window where `thunderbird` is on the path, else hands a draft file to
// the desktop's own handler (`xdg-open`). The body lies in a file under `scratch_folder` (made when
// missing, open to its owner only), which stays a week for the mail program to read. Raises
// NoMailClient (429) when neither program is installed, 53, 70 or 75 when the file cannot be
// written or the program cannot be started. Does not wait for the mail program.
void ComposeInMailClient(const Message& message, const std::filesystem::path& scratch_folder);

}  // namespace tenora::mail
