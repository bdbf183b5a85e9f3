// A parsed letter as an HTML fragment that mail programs show as paper does: inline styles, lists
// as lists, tables as tables, and the reader's own colours where the letter names none.
#pragma once

#include <string>
#include <string_view>

#include "output/rtf_to_html.h"
#include "platform/richtext/document.h"

namespace tenora::html {

struct DocumentHtmlOptions {
  std::string_view line_end;  // after each block: "\r\n" or empty
  bool font_faces = true;
  bool references = false;  // in ASCII, other characters as references
};

// The first page's header, the text, its notes and the first page's footer. Every "<", "&" and
// quote of the letter's text is an entity. UTF-8.
std::string DocumentHtml(const richtext::Document& document, const DocumentHtmlOptions& options,
                         const PictureSource& pictures);

}  // namespace tenora::html
