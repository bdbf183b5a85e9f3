// Lays out drawings: shapes with their fill, outline, picture and text.
#pragma once

#include <QSizeF>

#include "platform/printing/layout/floating.h"
#include "platform/printing/layout/layout_context.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// Whether the object is a drawing with something to see, or with a place of its own.
bool IsShown(const richtext::Verbatim& object);

// Where something of this size floats for a strip of this width; without content.
Floating PlaceFloating(const LayoutContext& context, const richtext::ShapeBox& box, QSizeF size,
                       double width);

// A drawing in its place, for a strip of this width whose top is the top of the paragraph the
// drawing is anchored in. Its text boxes grow until they hold their text.
Floating LayOutShape(LayoutContext& context, const richtext::Verbatim& drawing, double width);

}  // namespace tenora::printing
