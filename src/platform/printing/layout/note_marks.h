// The footnotes and endnotes of a document: their marks, and their places among its positions.
// The text of each note has positions of its own after the document's blocks: the endnotes' first,
// then the footnotes'.
#pragma once

#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/note_list.h"

namespace tenora::printing {

struct Note {
  const std::vector<richtext::Block>* blocks = nullptr;  // of the document
  int anchor = 0;                                        // position of the note in the text
  int position = 0;                                      // of its text's first character
};

class Notes {
 public:
  // Points into the document.
  explicit Notes(const richtext::Document& document);

  // In the order of their anchors.
  const std::vector<Note>& footnotes() const { return footnotes_; }
  const std::vector<Note>& endnotes() const { return endnotes_; }
  const richtext::NoteList& marks() const { return marks_; }

 private:
  std::vector<Note> footnotes_, endnotes_;
  richtext::NoteList marks_;
};

}  // namespace tenora::printing
