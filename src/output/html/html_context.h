// What all parts of one document's HTML share.
#pragma once

#include <string>
#include <string_view>

#include "output/html/css_style.h"
#include "output/html/document_parts.h"
#include "output/rtf_to_html.h"

namespace tenora::html {

struct HtmlContext {
  const DocumentParts& parts;
  Looks looks;
  const PictureSource& pictures;
  std::string_view line_end;  // after each block: "\r\n" or empty
  std::string html;           // written so far
};

// What surrounds a block. Lengths are twips.
struct Surroundings {
  Inherited inherited;
  int width = 0;            // for text, indents included
  int left = 0, right = 0;  // of the paragraphs' indents, how much the elements around have taken
};

}  // namespace tenora::html
