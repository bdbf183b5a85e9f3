// Cuts a letter's source into the text between its tables and the cells of its tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// A piece that can be converted on its own: it begins with the formats in force.
struct LetterPiece {
  std::string rtf;  // body only, without the document's head
  int row = -1;     // number of the table row in the document, -1: text outside tables
  int cell = -1;    // cell within the row
};

// The pieces in the order of the text. Cells of nested tables stay part of their outer cell,
// separated by tabs and line ends.
std::vector<LetterPiece> CutLetter(std::string_view source);

// The group that begins with `opening` ("{\\fonttbl"), braces included, to the end of the source
// where it is never closed; empty when there is none.
std::string_view FindGroup(std::string_view source, std::string_view opening);

}  // namespace tenora
