// Setting a paragraph: from runs of text to lines.
#pragma once

#include <memory>

#include "platform/printing/fonts.h"
#include "platform/printing/pictures.h"
#include "platform/printing/strip.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// What all parts of one document's layout share.
struct Typesetting {
  Typesetting(const richtext::Document& source, double height)
      : document(source), page_height(height), fonts(std::make_shared<Fonts>(source)) {}

  const richtext::Document& document;
  double page_height;  // twips; nothing undividable is set taller
  std::shared_ptr<Fonts> fonts;
  Pictures pictures;
};

struct ParagraphPlace {
  double width = 0;  // of the text area, twips
  int position = 0;  // of the paragraph's first character
  int number = 1;    // in its list
  // Neighbours in the same frame share its lines.
  bool framed_above = false, framed_below = false;
  double space_below = 0;  // to the neighbour in the same frame
  // Nothing visible follows: a page break at the paragraph's end makes no page.
  bool last_visible = false;
};

BlockStrips SetParagraph(Typesetting& typesetting, const richtext::Paragraph& paragraph,
                         const ParagraphPlace& place);

// Whether two paragraphs stand in one frame.
bool SameFrame(const richtext::ParagraphFormat& one, const richtext::ParagraphFormat& other);

// "3." or "(c)" as the list's format has it; the bullet character itself for bullets.
std::string ListMark(const richtext::Bullet& bullet, int number);

}  // namespace tenora::printing
