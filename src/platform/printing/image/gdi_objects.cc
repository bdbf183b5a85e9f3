#include "platform/printing/image/gdi_objects.h"

#include <cmath>

namespace tenora::printing {
namespace {

enum PenStyle {
  kSolid,
  kDash,
  kDot,
  kDashDot,
  kDashDotDot,
  kNoLine,
  kInsideFrame,
  kUserStyle,
  kAlternate
};

Qt::PenStyle StyleOf(unsigned style) {
  switch (style & 0xF) {
    case kDash:
      return Qt::DashLine;
    case kDot:
    case kAlternate:
      return Qt::DotLine;
    case kDashDot:
      return Qt::DashDotLine;
    case kDashDotDot:
      return Qt::DashDotDotLine;
    case kNoLine:
      return Qt::NoPen;
    default:
      return Qt::SolidLine;
  }
}

Qt::PenCapStyle CapOf(unsigned style) {
  switch (style >> 8 & 0xF) {
    case 1:
      return Qt::SquareCap;
    case 2:
      return Qt::FlatCap;
    default:
      return Qt::RoundCap;
  }
}

Qt::PenJoinStyle JoinOf(unsigned style) {
  switch (style >> 12 & 0xF) {
    case 1:
      return Qt::BevelJoin;
    case 2:
      return Qt::MiterJoin;
    default:
      return Qt::RoundJoin;
  }
}

}  // namespace

GdiPen PenFrom(unsigned style, double width, const QColor& colour) {
  GdiPen pen;
  pen.style = StyleOf(style);
  pen.width = std::abs(width);
  pen.colour = colour;
  pen.cap = CapOf(style);
  pen.join = JoinOf(style);
  return pen;
}

GdiBrush BrushFrom(unsigned style, const QColor& colour, unsigned hatch) {
  constexpr unsigned kSolidBrush = 0, kHollow = 1, kHatched = 2;
  GdiBrush brush;
  brush.colour = colour;
  brush.hatch = static_cast<int>(hatch % 6);
  if (style == kSolidBrush) {
    brush.kind = GdiBrush::Kind::kSolid;
  } else if (style == kHatched) {
    brush.kind = GdiBrush::Kind::kHatch;
  } else if (style == kHollow) {
    brush.kind = GdiBrush::Kind::kNone;
  } else {
    brush.kind = GdiBrush::Kind::kPattern;
  }
  return brush;
}

}  // namespace tenora::printing
