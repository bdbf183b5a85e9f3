// The text boxes of drawings. A mail program has no page to put them on: each becomes a block of
// its own, ahead of the paragraph that it is anchored in, or behind the letter's text.
#pragma once

#include <vector>

#include "platform/richtext/document.h"

namespace tenora::html {

struct TextBox {
  const richtext::Figure* figure = nullptr;
  const richtext::ShapeBox* place = nullptr;  // of its drawing
};

// Those that show something, in reading order; hidden ones are left out. Points into the paragraph.
std::vector<TextBox> TextBoxesOf(const richtext::Paragraph& paragraph);

// Whether it stands near the end of its page, as the addresses below a business letter do.
bool StandsBelow(const TextBox& box, const richtext::PageSetup& page);

// Where a box is between the edges of its text: at the left, in the middle or at the right.
richtext::Alignment SideOf(const TextBox& box, const richtext::PageSetup& page, int text_width);

}  // namespace tenora::html
