// Positions of a letter beside those of the QTextDocument that shows it. They differ where
// something is not shown, or shown and not in the letter.
#pragma once

#include <vector>

namespace tenora {

class PositionMap {
 public:
  // The next stretch of both, in reading order.
  void Add(int box_length, int qt_length);

  int ToQt(int box) const;
  int ToBox(int qt) const;

 private:
  struct Span {
    int box, qt;  // where it begins
    int box_length, qt_length;
  };
  std::vector<Span> spans_;
};

}  // namespace tenora
