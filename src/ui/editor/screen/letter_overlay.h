// Draws what Qt does not draw around a letter's text: list marks, paragraph borders, and lines
// where pages begin.
#pragma once

#include <QPainter>
#include <QRectF>
#include <QTextDocument>

#include "ui/editor/text/letter_formats.h"

namespace tenora {

// In the document's coordinates; draws only for the blocks that intersect `visible`.
void PaintOverlay(QPainter* painter, const QTextDocument& document, LetterFormats& formats,
                  const QRectF& visible);

}  // namespace tenora
