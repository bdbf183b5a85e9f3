// Where the hyperlinks of a letter lead.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::html {

// The address of the innermost HYPERLINK field around a text, null for none; its characters are
// those of a URL, others percent-encoded. Empty unless it is an http, https or mailto address: a
// letter must not run anything.
std::string LinkTarget(const richtext::Field* field);

}  // namespace tenora::html
