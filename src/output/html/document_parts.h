// The parts of a letter that an e-mail shows, which has no pages.
#pragma once

#include <span>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::html {

struct DocumentParts {
  // The first page's, with 1 for page numbers and counts; empty where there is none.
  std::vector<richtext::Block> header, footer;
  std::span<const richtext::Block> text;  // without the empty paragraphs around it
};

// Points into the document.
DocumentParts PartsOf(const richtext::Document& document);

// Lengths are twips.
struct TextArea {
  int width = 0;            // of the text on the letter's paper
  int left = 0, right = 0;  // the indents that everything in it has: a letter's own page margins
};
TextArea TextAreaOf(const richtext::Document& document, const DocumentParts& parts);

}  // namespace tenora::html
