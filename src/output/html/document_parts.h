// The parts of a letter that an e-mail shows, which has no pages: one header, the text, the text
// boxes that stand below it, its notes, and one footer.
#pragma once

#include <span>
#include <vector>

#include "output/html/text_box.h"
#include "platform/richtext/document.h"
#include "platform/richtext/note_list.h"

namespace tenora::html {

struct DocumentParts {
  const richtext::Document& document;
  // The first page's, with 1 for page numbers and counts; empty where there is none.
  std::vector<richtext::Block> header, footer;
  std::vector<richtext::Block> numbered;  // the text with the same, where it shows any
  std::span<const richtext::Block> text;  // without the empty paragraphs around it
  // The text boxes that stand near a page's end.
  std::vector<TextBox> below;
  // The footnotes, then the endnotes, each without the empty paragraphs around it.
  std::vector<std::span<const richtext::Block>> notes;
  richtext::NoteList note_list;
};

std::span<const richtext::Block> WithoutEmptyEnds(std::span<const richtext::Block> blocks);

// Points into the document.
DocumentParts PartsOf(const richtext::Document& document);

// The text boxes that stand where the paragraph does.
std::vector<TextBox> BoxesIn(const DocumentParts& parts, const richtext::Paragraph& paragraph);

// Lengths are twips.
struct TextArea {
  int width = 0;            // of the text on the letter's paper
  int left = 0, right = 0;  // the indents that everything in it has: a letter's own page margins
};
TextArea TextAreaOf(const DocumentParts& parts);

}  // namespace tenora::html
