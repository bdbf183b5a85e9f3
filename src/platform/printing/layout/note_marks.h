// The footnotes and endnotes of a document: their marks, and their places among its positions. A
// note that has neither its automatic mark nor one of the author's gets a number all the same: both
// ends of it, or the one without.
// The text of each note has positions of its own after the document's blocks: the endnotes' first,
// then the footnotes'.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::printing {

struct Note {
  const std::vector<richtext::Block>* blocks = nullptr;  // of the document
  int anchor = 0;                                        // position of the note in the text
  int position = 0;                                      // of its text's first character
};

// A mark for which the letter has no place.
struct ShownMark {
  std::string text;
  richtext::CharFormat format;
};

class Notes {
 public:
  // Points into the document.
  explicit Notes(const richtext::Document& document);

  // In the order of their anchors.
  const std::vector<Note>& footnotes() const { return footnotes_; }
  const std::vector<Note>& endnotes() const { return endnotes_; }
  // What stands at the position of a note's automatic mark, in the text or in the note; empty
  // where the mark belongs to no note.
  std::string MarkAt(int position) const;
  // What is shown at the position of a note in the text, and before a note's own text that begins
  // at the position; null for nothing.
  const ShownMark* AddedAt(int anchor) const { return Find(added_, anchor); }
  const ShownMark* LeadAt(int position) const { return Find(leads_, position); }

 private:
  using ShownMarks = std::map<int, ShownMark>;

  static const ShownMark* Find(const ShownMarks& marks, int position) {
    const auto found = marks.find(position);
    return found == marks.end() ? nullptr : &found->second;
  }
  void Number(const richtext::Document& document);

  std::vector<Note> footnotes_, endnotes_;
  std::map<int, std::string> marks_;
  ShownMarks added_, leads_;
};

}  // namespace tenora::printing
