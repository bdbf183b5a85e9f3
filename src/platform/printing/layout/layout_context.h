// What all parts of one document's layout share.
#pragma once

#include <memory>

#include "platform/printing/fonts.h"
#include "platform/printing/layout/body_numbers.h"
#include "platform/printing/layout/note_marks.h"
#include "platform/printing/paper_size.h"
#include "platform/printing/pictures.h"
#include "platform/richtext/document.h"
#include "platform/richtext/neighbours.h"

namespace tenora::printing {

// The paper and, between the margins, the text area on it. Twips from the paper's top left corner.
struct PageArea {
  double paper_width = 0, paper_height = 0;
  double left = 0, top = 0, right = 0, bottom = 0;

  double width() const { return right - left; }
  double reach() const { return paper_width - left; }  // from the text to the paper's right edge
  double height() const { return bottom - top; }
  bool operator==(const PageArea&) const = default;
};

// Where a document is printed: the area of its first section, the printer's paper, and the sides on
// which all sections keep that area's margin. On the others each has its own.
struct PageFrame {
  PageArea first;
  Paper printers;
  bool any_size = false;  // a section may have another than the printer's
  bool left_kept = true, top_kept = true, right_kept = true, bottom_kept = true;

  bool operator==(const PageFrame&) const = default;
};

// What a printer looks up once for all its documents: letters from one template share their fonts
// and their letterhead. Used by one thread at a time.
struct SharedResources {
  InstalledFamilies families;
  Pictures pictures;
};

struct LayoutContext {
  // For the pages of the first section.
  LayoutContext(const richtext::Document& source, const PageArea& page, SharedResources& resources)
      : document(source),
        area(page),
        page_height(page.height()),
        fonts(std::make_shared<Fonts>(source, resources.families)),
        pictures(resources.pictures),
        notes(std::make_shared<Notes>(source)),
        html_spacing(richtext::HasHtmlSpacing(source)) {}

  const richtext::Document& document;
  PageArea area;
  double page_height;  // twips; nothing undividable is made taller
  std::shared_ptr<Fonts> fonts;
  Pictures& pictures;
  std::shared_ptr<const Notes> notes;
  std::shared_ptr<BodyNumbers> numbers;  // null in a document without any
  bool html_spacing;  // of the space below a paragraph and that above the next, the larger counts
};

}  // namespace tenora::printing
