// What a template holds that its letters will not show on paper.
#pragma once

#include <vector>

#include "letters/template_lint.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// A finding for each picture, drawing and the like, in the order of the letter and then of its
// headers and footers. Pictures are decoded. Call on the main thread.
std::vector<TemplateFinding> LintPaper(const RichTextBox& letter);

}  // namespace tenora
