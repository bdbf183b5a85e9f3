// A picture inside the address that shows it, for HTML without parts beside it.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora {

// "data:image/png;base64,…", empty for a picture that cannot be shown.
std::string EmbeddedPicture(const richtext::Picture& picture);

}  // namespace tenora
