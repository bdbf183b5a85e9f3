#include "platform/printing/image/emf_shapes.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace tenora::printing {
namespace {

constexpr std::size_t kAfterBounds = 24;  // type, size and bounds

// Of points of two or four bytes a number, as many as the record has.
QPolygonF Points(const EmfRecord& record, std::size_t at, std::size_t count, bool small) {
  const std::size_t size = small ? 4 : 8;
  const std::size_t held = at < record.bytes.size() ? (record.bytes.size() - at) / size : 0;
  count = std::min(count, held);
  QPolygonF points;
  points.reserve(static_cast<qsizetype>(count));
  for (std::size_t i = 0; i < count; ++i, at += size) {
    points.append(small ? QPointF(record.bytes.Signed16(at), record.bytes.Signed16(at + 2))
                        : record.Point(at));
  }
  return points;
}

// Curves through every third point.
void AddCurves(QPainterPath& path, const QPolygonF& points, qsizetype from) {
  for (qsizetype i = from; i + 2 < points.size(); i += 3) {
    path.cubicTo(points[i], points[i + 1], points[i + 2]);
  }
}

void PlayPolygon(const EmfRecord& record, MetafileCanvas& canvas, bool small) {
  const QPolygonF points = Points(record, kAfterBounds + 4, record.Number(kAfterBounds), small);
  QPainterPath path;
  const QPointF position = canvas.state().position;
  switch (record.type) {
    case EmfType::kPolygon:
    case EmfType::kPolygon16:
      path.addPolygon(points);
      path.closeSubpath();
      return canvas.Area(path);
    case EmfType::kPolyline:
    case EmfType::kPolyline16:
      path.addPolygon(points);
      return canvas.Line(path);
    case EmfType::kPolyBezier:
    case EmfType::kPolyBezier16:
      if (points.isEmpty()) return;
      path.moveTo(points[0]);
      AddCurves(path, points, 1);
      return canvas.Line(path);
    case EmfType::kPolyBezierTo:
    case EmfType::kPolyBezierTo16:
      path.moveTo(position);
      AddCurves(path, points, 0);
      return canvas.Continue(path);
    default:
      path.moveTo(position);
      for (const QPointF& point : points) path.lineTo(point);
      return canvas.Continue(path);
  }
}

void PlayPolyPolygon(const EmfRecord& record, MetafileCanvas& canvas, bool small, bool closed) {
  const std::size_t most = record.bytes.size() / 4;
  const std::size_t count = std::min<std::size_t>(record.Number(kAfterBounds), most);
  std::size_t at = kAfterBounds + 8 + 4 * count;
  QPainterPath path;
  for (std::size_t i = 0; i < count && at < record.bytes.size(); ++i) {
    const std::size_t points = std::min<std::size_t>(record.Number(kAfterBounds + 8 + 4 * i), most);
    path.addPolygon(Points(record, at, points, small));
    if (closed) path.closeSubpath();
    at += points * (small ? 4 : 8);
  }
  if (closed) {
    canvas.Area(path);
  } else {
    canvas.Line(path);
  }
}

void PlayPolyDraw(const EmfRecord& record, MetafileCanvas& canvas, bool small) {
  constexpr int kClose = 1, kLine = 2, kCurve = 4, kMove = 6;
  const QPolygonF points = Points(record, kAfterBounds + 4, record.Number(kAfterBounds), small);
  const std::size_t kinds =
      kAfterBounds + 4 + static_cast<std::size_t>(points.size()) * (small ? 4 : 8);
  QPainterPath path;
  path.moveTo(canvas.state().position);
  for (qsizetype i = 0; i < points.size(); ++i) {
    int kind = record.bytes.Byte(kinds + static_cast<std::size_t>(i));
    if ((kind & ~kClose) == kMove) {
      path.moveTo(points[i]);
    } else if ((kind & ~kClose) == kLine) {
      path.lineTo(points[i]);
    } else if ((kind & ~kClose) == kCurve && i + 2 < points.size()) {
      path.cubicTo(points[i], points[i + 1], points[i + 2]);
      i += 2;
      kind = record.bytes.Byte(kinds + static_cast<std::size_t>(i));
    }
    if ((kind & kClose) != 0) path.closeSubpath();
  }
  canvas.Continue(path);
}

void PlayAngleArc(const EmfRecord& record, MetafileCanvas& canvas) {
  const QPointF centre = record.Point(8);
  const double radius = record.Number(16);
  const double start = record.bytes.Float(20), sweep = record.bytes.Float(24);
  if (!std::isfinite(start) || !std::isfinite(sweep)) return;
  QPainterPath path;
  path.moveTo(canvas.state().position);
  path.arcTo(QRectF(centre - QPointF(radius, radius), centre + QPointF(radius, radius)), start,
             std::clamp(sweep, -360.0, 360.0));
  canvas.Continue(path);
}

bool PlayPoly(const EmfRecord& record, MetafileCanvas& canvas) {
  switch (record.type) {
    case EmfType::kPolyBezier:
    case EmfType::kPolygon:
    case EmfType::kPolyline:
    case EmfType::kPolyBezierTo:
    case EmfType::kPolylineTo:
      PlayPolygon(record, canvas, false);
      return true;
    case EmfType::kPolyBezier16:
    case EmfType::kPolygon16:
    case EmfType::kPolyline16:
    case EmfType::kPolyBezierTo16:
    case EmfType::kPolylineTo16:
      PlayPolygon(record, canvas, true);
      return true;
    case EmfType::kPolyPolyline:
    case EmfType::kPolyPolyline16:
      PlayPolyPolygon(record, canvas, record.type == EmfType::kPolyPolyline16, false);
      return true;
    case EmfType::kPolyPolygon:
    case EmfType::kPolyPolygon16:
      PlayPolyPolygon(record, canvas, record.type == EmfType::kPolyPolygon16, true);
      return true;
    case EmfType::kPolyDraw:
    case EmfType::kPolyDraw16:
      PlayPolyDraw(record, canvas, record.type == EmfType::kPolyDraw16);
      return true;
    default:
      return false;
  }
}

// Colour levels have sixteen bits there.
GradientCorner CornerAt(const EmfRecord& record, std::size_t at) {
  return {record.Point(at), QColor(record.bytes.Byte(at + 9), record.bytes.Byte(at + 11),
                                   record.bytes.Byte(at + 13))};
}

void PlayGradient(const EmfRecord& record, MetafileCanvas& canvas) {
  constexpr std::size_t kCorners = 36, kCornerSize = 16;
  constexpr std::uint32_t kHorizontal = 0, kTriangle = 2;
  const std::uint32_t corners = record.Number(24), mode = record.Number(32);
  const std::size_t index_size = mode == kTriangle ? 12 : 8;
  const std::size_t most = record.bytes.size() / kCornerSize;
  if (corners > most) return canvas.output().LeaveOut();
  const std::size_t meshes = kCorners + corners * kCornerSize;
  const std::size_t count = std::min<std::size_t>(record.Number(28), most * 2);
  const auto corner = [&](std::size_t index_at) {
    const std::uint32_t index = record.Number(index_at);
    return CornerAt(record, kCorners + std::min(index, corners) * kCornerSize);
  };
  for (std::size_t i = 0; i < count && !canvas.output().full(); ++i) {
    const std::size_t at = meshes + i * index_size;
    if (mode == kTriangle) {
      canvas.Gradient({corner(at), corner(at + 4), corner(at + 8)});
    } else {
      canvas.Gradient(corner(at), corner(at + 4), mode == kHorizontal);
    }
  }
}

}  // namespace

bool PlayEmfShape(const EmfRecord& record, MetafileCanvas& canvas) {
  QPainterPath path;
  switch (record.type) {
    case EmfType::kMoveTo:
      canvas.MoveTo(record.Point(8));
      return true;
    case EmfType::kLineTo:
      path.moveTo(canvas.state().position);
      path.lineTo(record.Point(8));
      canvas.Continue(path);
      return true;
    case EmfType::kSetPixel:
      canvas.Pixel(record.Point(8), record.Colour(16));
      return true;
    case EmfType::kEllipse:
      path.addEllipse(record.Rect(8));
      canvas.Area(path);
      return true;
    case EmfType::kRectangle:
      path.addRect(record.Rect(8));
      canvas.Area(path);
      return true;
    case EmfType::kRoundRect:
      path.addRoundedRect(record.Rect(8), std::abs(record.Signed(24) / 2.0),
                          std::abs(record.Signed(28) / 2.0));
      canvas.Area(path);
      return true;
    case EmfType::kArc:
      canvas.Arc(ArcKind::kArc, record.Rect(8), record.Point(24), record.Point(32));
      return true;
    case EmfType::kChord:
      canvas.Arc(ArcKind::kChord, record.Rect(8), record.Point(24), record.Point(32));
      return true;
    case EmfType::kPie:
      canvas.Arc(ArcKind::kPie, record.Rect(8), record.Point(24), record.Point(32));
      return true;
    case EmfType::kArcTo:
      canvas.ArcTo(record.Rect(8), record.Point(24), record.Point(32));
      return true;
    case EmfType::kAngleArc:
      PlayAngleArc(record, canvas);
      return true;
    case EmfType::kGradientFill:
      PlayGradient(record, canvas);
      return true;
    default:
      return PlayPoly(record, canvas);
  }
}

}  // namespace tenora::printing
