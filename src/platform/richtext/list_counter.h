// Counts the paragraphs of lists.
#pragma once

#include <map>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// Called for the paragraphs of a text or a cell in their order.
class ListCounter {
 public:
  // The paragraph's number in its list, 1 outside lists. Consecutive list paragraphs continue the
  // numbering; a paragraph outside the list, or at a smaller indent, ends the lists nested in it.
  int Next(const ParagraphFormat& format);
  // A table ends all lists.
  void EndAll() { lists_.clear(); }

 private:
  struct NumberedList {
    Bullet bullet;
    int number = 0;
  };

  std::map<int, NumberedList> lists_;  // by left indent
};

}  // namespace tenora::richtext
