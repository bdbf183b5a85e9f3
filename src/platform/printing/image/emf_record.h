// A record of an EMF file and the numbers that say what it does.
#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QTransform>
#include <cstdint>

#include "platform/printing/image/record_bytes.h"

namespace tenora::printing {

enum class EmfType : std::uint32_t {
  kHeader = 1,
  kPolyBezier = 2,
  kPolygon = 3,
  kPolyline = 4,
  kPolyBezierTo = 5,
  kPolylineTo = 6,
  kPolyPolyline = 7,
  kPolyPolygon = 8,
  kSetWindowExt = 9,
  kSetWindowOrg = 10,
  kSetViewportExt = 11,
  kSetViewportOrg = 12,
  kSetBrushOrg = 13,
  kEnd = 14,
  kSetPixel = 15,
  kSetMapperFlags = 16,
  kSetMapMode = 17,
  kSetBkMode = 18,
  kSetPolyFillMode = 19,
  kSetRop2 = 20,
  kSetStretchBltMode = 21,
  kSetTextAlign = 22,
  kSetColourAdjustment = 23,
  kSetTextColour = 24,
  kSetBkColour = 25,
  kOffsetClipRegion = 26,
  kMoveTo = 27,
  kSetMetaRegion = 28,
  kExcludeClipRect = 29,
  kIntersectClipRect = 30,
  kScaleViewportExt = 31,
  kScaleWindowExt = 32,
  kSaveDc = 33,
  kRestoreDc = 34,
  kSetWorldTransform = 35,
  kModifyWorldTransform = 36,
  kSelectObject = 37,
  kCreatePen = 38,
  kCreateBrush = 39,
  kDeleteObject = 40,
  kAngleArc = 41,
  kEllipse = 42,
  kRectangle = 43,
  kRoundRect = 44,
  kArc = 45,
  kChord = 46,
  kPie = 47,
  kSelectPalette = 48,
  kCreatePalette = 49,
  kSetPaletteEntries = 50,
  kResizePalette = 51,
  kRealizePalette = 52,
  kFloodFill = 53,
  kLineTo = 54,
  kArcTo = 55,
  kPolyDraw = 56,
  kSetArcDirection = 57,
  kSetMiterLimit = 58,
  kBeginPath = 59,
  kEndPath = 60,
  kCloseFigure = 61,
  kFillPath = 62,
  kStrokeAndFillPath = 63,
  kStrokePath = 64,
  kFlattenPath = 65,
  kWidenPath = 66,
  kSelectClipPath = 67,
  kAbortPath = 68,
  kComment = 70,
  kFillRegion = 71,
  kFrameRegion = 72,
  kInvertRegion = 73,
  kPaintRegion = 74,
  kSelectClipRegion = 75,
  kBitBlt = 76,
  kStretchBlt = 77,
  kMaskBlt = 78,
  kPlgBlt = 79,
  kSetDibitsToDevice = 80,
  kStretchDibits = 81,
  kCreateFont = 82,
  kTextA = 83,
  kTextW = 84,
  kPolyBezier16 = 85,
  kPolygon16 = 86,
  kPolyline16 = 87,
  kPolyBezierTo16 = 88,
  kPolylineTo16 = 89,
  kPolyPolyline16 = 90,
  kPolyPolygon16 = 91,
  kPolyDraw16 = 92,
  kCreateMonoBrush = 93,
  kCreateDibPatternBrush = 94,
  kExtCreatePen = 95,
  kPolyTextA = 96,
  kPolyTextW = 97,
  kSetIcmMode = 98,
  kCreateColourSpace = 99,
  kSetColourSpace = 100,
  kDeleteColourSpace = 101,
  kPixelFormat = 104,
  kExtEscape = 106,
  kSmallText = 108,
  kForceUfiMapping = 109,
  kNamedEscape = 110,
  kColourCorrectPalette = 111,
  kSetIcmProfileA = 112,
  kSetIcmProfileW = 113,
  kAlphaBlend = 114,
  kSetLayout = 115,
  kTransparentBlt = 116,
  kGradientFill = 118,
  kSetLinkedUfis = 119,
  kSetTextJustification = 120,
  kColourMatchToTarget = 121,
  kCreateColourSpaceW = 122,
};

// Offsets count from the record's start, with its type and size.
struct EmfRecord {
  EmfType type;
  RecordBytes bytes;

  std::uint32_t Number(std::size_t at) const { return bytes.Unsigned32(at); }
  std::int32_t Signed(std::size_t at) const { return bytes.Signed32(at); }
  QPointF Point(std::size_t at) const { return QPointF(Signed(at), Signed(at + 4)); }
  QSizeF Size(std::size_t at) const { return QSizeF(Signed(at), Signed(at + 4)); }
  // Left, top, right, bottom.
  QRectF Rect(std::size_t at) const { return QRectF(Point(at), Point(at + 8)).normalized(); }
  QColor Colour(std::size_t at) const {
    return {bytes.Byte(at), bytes.Byte(at + 1), bytes.Byte(at + 2)};
  }
  QTransform Transform(std::size_t at) const {
    return QTransform(bytes.Float(at), bytes.Float(at + 4), bytes.Float(at + 8),
                      bytes.Float(at + 12), bytes.Float(at + 16), bytes.Float(at + 20));
  }
};

}  // namespace tenora::printing
