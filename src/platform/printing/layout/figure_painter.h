// Draws what a figure of a drawing is beside its text and picture: its outline, fill and letters.
#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include "platform/richtext/document.h"

namespace tenora::printing {

// `letters` are those of a figure with lettering; they are made as wide and high as the area,
// twips.
void DrawFigure(QPainter& painter, const richtext::Figure& figure, const QPainterPath& letters,
                const QRectF& area);

}  // namespace tenora::printing
