// A message as the text that goes over the wire.
#pragma once

#include <string>

#include "platform/mail/message.h"

namespace tenora::mail {

// Header lines, a blank line and the MIME body, in 7-bit lines that end with CR LF:
// mixed { alternative { text, related { html, pictures } }, attachments }, each level only where it
// is not empty.
std::string MimeText(const Message& message);

}  // namespace tenora::mail
