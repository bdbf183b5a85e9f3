// The words of a row definition that keep text off the edges of its cells, each a length with a
// unit: \clpadl57\clpadfl3. Lengths in other units than twips are none.
#pragma once

#include <array>

#include "platform/richtext/document.h"
#include "platform/richtext/tokenizer.h"

namespace tenora::richtext {

class PaddingWords {
 public:
  // Takes \trpadd… and \clpad…; passes over any other word.
  void Take(const Token& word);
  // The padding of the cell that ends here; the next one starts with the row's.
  Padding EndCell();

 private:
  struct Side {
    int length = 0, unit = 0;
  };
  using Sides = std::array<Side, 4>;  // top, left, bottom, right

  Sides row_, cell_;
};

}  // namespace tenora::richtext
