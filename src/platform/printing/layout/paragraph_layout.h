// Breaks a paragraph into lines.
#pragma once

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/strip.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct ParagraphPlace {
  double width = 0;  // of the text area, twips
  int position = 0;  // of the paragraph's first character
  int number = 1;    // in its list
  bool in_cell = false;
  double space_above = 0, space_below = 0;  // to the neighbours
  // Whether the neighbours share the paragraph's frame.
  bool framed_above = false, framed_below = false;
  double frame_below = 0;  // how far the frame extends below, to the neighbour that shares it
  // Nothing visible follows: a page break at the paragraph's end adds no page.
  bool last_visible = false;
  // It begins the letter: a page break before its text leaves a page empty.
  bool begins_letter = false;
  bool ends_page = false;  // the section ends with it, and the next one begins a page
  // The paragraph's first line begins at this height, and what floats in it is added; null where
  // nothing may float.
  double y = 0;
  TakenAreas* taken = nullptr;
};

BlockStrips LayOutParagraph(LayoutContext& context, const richtext::Paragraph& paragraph,
                            const ParagraphPlace& place);

}  // namespace tenora::printing
