// What a letter shows around its text and Qt does not draw: the marks of lists, the borders of
// paragraphs, where pages begin.
#pragma once

#include <QPainter>
#include <QRectF>
#include <QTextDocument>

#include "ui/editor/text/letter_formats.h"

namespace tenora {

// In the document's own coordinates; only the blocks that meet `visible`.
void PaintOverlay(QPainter* painter, const QTextDocument& document, LetterFormats& formats,
                  const QRectF& visible);

}  // namespace tenora
