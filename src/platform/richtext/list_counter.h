// Counts the paragraphs of lists, for saved letters, paper, the editor and e-mails alike.
#pragma once

#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// Numbers the paragraphs of one text in their order. Paragraphs with equal bullets count on,
// whatever their indents, also after lists in between that stand further in; any other paragraph
// or list ends the count.
class ListCounter {
 public:
  // The number of the next paragraph; 0 for one outside lists.
  int Next(const ParagraphFormat& format);
  // What Next would give.
  int Peek(const ParagraphFormat& format) const;
  // A table ends all lists.
  void EndAll() { open_.clear(); }

 private:
  struct OpenList {
    Bullet bullet;
    int indent = 0;
    int number = 0;
  };

  // How many of the open lists stay open for a paragraph of this format.
  std::size_t Kept(const ParagraphFormat& format) const;

  std::vector<OpenList> open_;  // each further in than the one before
};

}  // namespace tenora::richtext
