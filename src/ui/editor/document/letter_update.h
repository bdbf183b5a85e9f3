// Updates a QTextDocument from one state of a letter to another. It changes only the paragraphs
// that differ where it can, so that the caret and the view stay where they are.
#pragma once

#include <QTextDocument>
#include <cstddef>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/text/letter_formats.h"
#include "ui/editor/text/position_map.h"

namespace tenora {

// As one undo step. `shown` is the letter that the document shows, `positions` its positions.
void UpdateLetter(QTextDocument* document, LetterFormats* formats,
                  const std::vector<richtext::Block>& shown, const PositionMap& positions,
                  const std::vector<richtext::Block>& wanted);

// Puts other blocks, or none, in the place of the one at `index`, as one undo step and without
// comparing the rest of the letter. `shown` and `positions` are as above.
void ReplaceBlock(QTextDocument* document, LetterFormats* formats,
                  const std::vector<richtext::Block>& shown, const PositionMap& positions,
                  std::size_t index, const std::vector<richtext::Block>& replacement);

}  // namespace tenora
