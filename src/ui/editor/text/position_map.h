// Converts between positions in a letter and in the QTextDocument that shows it. They differ where
// the letter has something that is not shown, and where something is shown that it does not have.
#pragma once

#include <vector>

namespace tenora {

class PositionMap {
 public:
  // Appends the next span of both, in reading order.
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
