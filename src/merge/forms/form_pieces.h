// A text of a template in pieces: what its paragraphs hold, one after the other, with the codes
// apart.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "merge/forms/form_marker.h"
#include "platform/richtext/document.h"

namespace tenora {

struct FormPiece {
  enum class Kind { kText, kMark, kCode, kLineEnd, kParagraphEnd, kTable, kRow };

  Kind kind = Kind::kText;
  const richtext::Paragraph* paragraph = nullptr;
  const richtext::Run* run = nullptr;  // of kText, kCode, kLineEnd
  std::size_t begin = 0, end = 0;      // bytes of the run's text
  const richtext::Mark* mark = nullptr;
  // Of kLineEnd, of kParagraphEnd for its last line: whether a marker stands in the line.
  bool marked = false;
  bool paragraph_marked = false;  // the same of all lines of a kParagraphEnd

  std::string code = {};  // between the brackets
  std::optional<FormMarker> marker = {};
  // By a change of format; the pieces of the code in the next runs then follow in `rest`.
  bool split = false;
  std::vector<FormPiece> rest = {};
  bool crossed = false;              // it begins behind the end of another one in its row
  std::size_t offset = 0, size = 0;  // of the code, in the text as WriteFinding counts

  const richtext::Row* row = nullptr;
  std::vector<FormPiece> rows = {};                // of kTable: rows and markers
  std::vector<std::vector<FormPiece>> cells = {};  // of kRow

  bool IsMarker() const { return marker.has_value(); }
};

using FormPieces = std::vector<FormPiece>;

// The pieces of blocks, which outlive them. Markers that begin in one cell and end in another stand
// around their row; those that do not end in their row, between the rows.
FormPieces PiecesOf(const std::vector<richtext::Block>& blocks);

}  // namespace tenora
