// Which letters a window can show.
#pragma once

#include <string>

#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Raises 75 (Path/File access error), whose description begins with `name`, for a letter that would
// freeze the editor.
void RequireShowable(const RichTextBox& letter, const std::string& name);

}  // namespace tenora
