// What a letter holds that its print does not show.
#pragma once

#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::printing {

// In words for people ("a WMF picture", "a footnote"), each once, in the order of the document and
// then of its headers and footers. Pictures are decoded. Call on the main thread.
std::vector<std::string> NotOnPaper(const richtext::Document& document);

}  // namespace tenora::printing
