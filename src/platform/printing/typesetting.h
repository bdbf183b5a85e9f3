// What all parts of one document's layout share.
#pragma once

#include <memory>

#include "platform/printing/resources.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct Typesetting {
  Typesetting(const richtext::Document& source, double height, double width_to_edge,
              Resources& resources)
      : document(source),
        page_height(height),
        reach(width_to_edge),
        fonts(std::make_shared<Fonts>(source, resources.families)),
        pictures(resources.pictures) {}

  const richtext::Document& document;
  double page_height;  // twips; nothing undividable is set taller
  double reach;        // twips from the text's left edge to the paper's right edge
  std::shared_ptr<Fonts> fonts;
  Pictures& pictures;
};

}  // namespace tenora::printing
