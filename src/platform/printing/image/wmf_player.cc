#include "platform/printing/image/wmf_player.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "platform/printing/image/emf_player.h"
#include "platform/printing/image/metafile.h"
#include "platform/printing/image/metafile_canvas.h"
#include "platform/printing/image/record_bytes.h"
#include "platform/printing/image/wmf_bitmaps.h"
#include "platform/printing/image/wmf_record.h"

namespace tenora::printing {
namespace {

constexpr double kTwipsPerInch = 1440, kTwipsPerPixel = 15;
constexpr double kTwipsPerMillimetre = kTwipsPerInch / 25.4;
constexpr std::size_t kHeader = 18, kRecordHeader = 6;

QColor ColourAt(const RecordBytes& values, std::size_t at) {
  return {values.Byte(at), values.Byte(at + 1), values.Byte(at + 2)};
}

class WmfPlayer {
 public:
  explicit WmfPlayer(std::string_view wmf)
      : file_(wmf), canvas_(QSizeF(kTwipsPerMillimetre, kTwipsPerMillimetre)) {}

  std::shared_ptr<const Drawing> Play() {
    if (const auto metafile = ReadMetafile(file_.bytes())) {
      size_ = QSizeF(std::abs(metafile->width), std::abs(metafile->height));
    }
    Start();
    std::size_t at = start_ + kHeader;
    bool ended = false;
    while (!ended && at + kRecordHeader <= file_.size() && !canvas_.output().full()) {
      const std::size_t size = std::size_t{file_.Unsigned32(at)} * 2;
      if (size < kRecordHeader || size > file_.size() - at) break;
      const std::uint16_t function = file_.Unsigned16(at + 4);
      ended = function == kEnd;
      if (!ended) Record(function, file_.Part(at + kRecordHeader, size - kRecordHeader));
      if (!frame_ && !canvas_.output().empty()) SetFrame();
      at += size;
    }
    if (!ended) canvas_.output().LeaveOut();
    if (!enhanced_.empty() && enhanced_.size() == enhanced_size_) {
      const auto enhanced = PlayEmf(enhanced_);
      if (enhanced->complete() && !enhanced->empty()) return enhanced;
    }
    return Take();
  }

 private:
  // The window fills the picture's size, in twips, unless the file says otherwise.
  void Start() {
    CanvasState& state = canvas_.state();
    state.map_mode = kMapAnisotropic;
    state.viewport_extent = QSizeF(kTwipsPerPixel, kTwipsPerPixel);
    if (const auto box = PlaceableBox(file_.bytes())) {
      start_ = kPlaceableHeader;
      state.window_origin = box->topLeft();
      state.window_extent = box->size();
      state.viewport_extent = size_;
      has_window_ = true;
    }
    canvas_.UpdateTransform();
  }

  void SetFrame() {
    const CanvasState& state = canvas_.state();
    const bool scaled = state.map_mode >= kMapIsotropic && has_window_;
    frame_ = scaled ? QRectF(state.viewport_origin, state.viewport_extent).normalized() : QRectF();
  }

  std::shared_ptr<const Drawing> Take() {
    DrawingBuilder& output = canvas_.output();
    if (output.empty()) return output.Take(QRectF(0, 0, 1, 1), size_);
    QRectF frame = frame_.value_or(QRectF());
    // A frame that shows nothing of what is drawn is none.
    if (frame.isEmpty() || !frame.intersects(output.bounds())) {
      frame = output.bounds();
      if (start_ == 0) size_ = frame.size();
    }
    return output.Take(frame, size_);
  }

  void Record(std::uint16_t function, const RecordBytes& values) {
    if (!Context(function, values) && !Coordinates(function, values) && !Object(function, values) &&
        !Clipping(function, values) && !Shape(function, values) && !RoundShape(function, values) &&
        !Text(function, values) && !PlayWmfBitmap(function, values, canvas_)) {
      canvas_.output().LeaveOut();
    }
  }

  bool Context(std::uint16_t function, const RecordBytes& values) {
    CanvasState& state = canvas_.state();
    switch (function) {
      case kSaveDc:
        canvas_.Save();
        return true;
      case kRestoreDc:
        canvas_.Restore(values.Signed16(0));
        return true;
      case kSetBkMode:
        state.opaque = values.Unsigned16(0) == 2;
        return true;
      case kSetRop2:
        state.operation = std::clamp<int>(values.Unsigned16(0), 1, 16) - 1;
        return true;
      case kSetPolyFillMode:
        state.fill_rule = values.Unsigned16(0) == 2 ? Qt::WindingFill : Qt::OddEvenFill;
        return true;
      case kSetTextAlign:
        state.text.align = values.Unsigned16(0);
        return true;
      case kSetTextCharExtra:
        state.text.letter_spacing = values.Signed16(0);
        return true;
      case kSetTextJustification:
        state.text.word_spacing = double(values.Signed16(2)) / std::max<int>(values.Signed16(0), 1);
        return true;
      case kSetTextColour:
        state.text.colour = ColourAt(values, 0);
        return true;
      case kSetBkColour:
        state.ground_colour = ColourAt(values, 0);
        return true;
      case kEscape:
        Escape(values);
        return true;
      // These show nothing.
      case kSetStretchBltMode:
      case kSetRelAbs:
      case kSetMapperFlags:
      case kSetLayout:
      case kSelectPalette:
      case kRealizePalette:
      case kSetPaletteEntries:
      case kResizePalette:
      case kAnimatePalette:
        return true;
      default:
        return false;
    }
  }

  // Windows puts the enhanced metafile that a file was made from into its comments, in pieces.
  void Escape(const RecordBytes& values) {
    constexpr std::uint16_t kComment = 15;
    constexpr std::uint32_t kEnhancedMetafile = 0x43464D57;
    if (values.Unsigned16(0) != kComment || values.Unsigned32(4) != kEnhancedMetafile) return;
    enhanced_.append(values.Part(38, values.Unsigned32(26)).bytes());
    enhanced_size_ = values.Unsigned32(34);
  }

  bool Coordinates(std::uint16_t function, const RecordBytes& values) {
    CanvasState& state = canvas_.state();
    const QPointF point(values.Signed16(2), values.Signed16(0));
    const auto scale = [&](QSizeF& extent) {
      const auto factor = [&](std::size_t at) {
        const double denominator = values.Signed16(at);
        return denominator == 0 ? 1 : values.Signed16(at + 2) / denominator;
      };
      extent = QSizeF(extent.width() * factor(4), extent.height() * factor(0));
    };
    switch (function) {
      case kSetMapMode:
        state.map_mode = values.Unsigned16(0);
        break;
      case kSetWindowOrg:
        state.window_origin = point;
        break;
      case kOffsetWindowOrg:
        state.window_origin += point;
        break;
      case kSetWindowExt:
        state.window_extent = QSizeF(point.x(), point.y());
        if (!has_window_) state.viewport_extent = size_;
        has_window_ = true;
        break;
      case kSetViewportOrg:
        state.viewport_origin = point * kTwipsPerPixel;
        break;
      case kOffsetViewportOrg:
        state.viewport_origin += point * kTwipsPerPixel;
        break;
      case kSetViewportExt:
        state.viewport_extent = QSizeF(point.x(), point.y()) * kTwipsPerPixel;
        has_window_ = true;
        break;
      case kScaleWindowExt:
        scale(state.window_extent);
        break;
      case kScaleViewportExt:
        scale(state.viewport_extent);
        break;
      default:
        return false;
    }
    canvas_.UpdateTransform();
    return true;
  }

  bool Object(std::uint16_t function, const RecordBytes& values) {
    const std::size_t number = values.Unsigned16(0);
    switch (function) {
      case kSelectObject:
        canvas_.Select(objects_.At(number));
        return true;
      case kDeleteObject:
        objects_.Delete(number);
        return true;
      case kCreatePen:
        objects_.Add(PenFrom(values.Unsigned16(0), values.Signed16(2), ColourAt(values, 6)));
        return true;
      case kCreateBrush:
        objects_.Add(BrushFrom(values.Unsigned16(0), ColourAt(values, 2), values.Unsigned16(6)));
        return true;
      case kCreateFont:
        objects_.Add(Font(values));
        return true;
      case kDibCreatePatternBrush: {
        GdiBrush brush;
        brush.kind = GdiBrush::Kind::kPattern;
        brush.pattern = canvas_.output().Bitmap(PartsOf(values.From(4).bytes()), false);
        brush.two_colours = values.Unsigned16(0) == 3;
        objects_.Add(std::move(brush));
        return true;
      }
      case kCreatePatternBrush:
        objects_.Add(DevicePattern(values));
        return true;
      case kCreateRegion:
        objects_.Add(RegionFrom(values));
        return true;
      case kCreatePalette:
        objects_.Add(GdiOther{});
        return true;
      default:
        return false;
    }
  }

  static GdiFont Font(const RecordBytes& values) {
    GdiFont font;
    font.height = values.Signed16(0);
    font.width = values.Signed16(2);
    font.escapement = values.Signed16(4) / 10.0;
    font.weight = values.Signed16(8);
    font.italic = values.Byte(10) != 0;
    font.underline = values.Byte(11) != 0;
    font.strike_out = values.Byte(12) != 0;
    font.charset = values.Byte(13);
    font.pitch_and_family = values.Byte(17);
    const std::string_view name = values.Part(18, 32).bytes();
    font.family = QString::fromLatin1(name.substr(0, name.find('\0')));
    return font;
  }

  GdiBrush DevicePattern(const RecordBytes& values) {
    GdiBrush brush;
    brush.kind = GdiBrush::Kind::kPattern;
    brush.pattern = WmfDeviceBitmap(values, 32, canvas_);
    brush.two_colours = true;
    return brush;
  }

  static GdiRegion RegionFrom(const RecordBytes& values) {
    GdiRegion region;
    const int scans = values.Signed16(10);
    std::size_t at = 22;
    for (int i = 0; i < scans && at + 8 <= values.size(); ++i) {
      const std::size_t numbers = values.Unsigned16(at);
      for (std::size_t n = 0; n + 1 < numbers && at + 10 + 2 * n <= values.size(); n += 2) {
        region.rectangles.push_back(RectOf(values.Signed16(at + 6 + 2 * n), values.Signed16(at + 2),
                                           values.Signed16(at + 8 + 2 * n),
                                           values.Signed16(at + 4)));
      }
      at += 8 + 2 * numbers;
    }
    return region;
  }

  bool Clipping(std::uint16_t function, const RecordBytes& values) {
    switch (function) {
      case kIntersectClipRect:
        canvas_.IntersectClip(RectAt(values, 0));
        return true;
      case kExcludeClipRect:
        canvas_.ExcludeClip(RectAt(values, 0));
        return true;
      case kOffsetClipRegion:
        canvas_.OffsetClip(QPointF(values.Signed16(2), values.Signed16(0)));
        return true;
      case kSelectClipRegion: {
        canvas_.state().clip = nullptr;
        const auto* region = std::get_if<GdiRegion>(&objects_.At(values.Unsigned16(0)));
        if (region == nullptr) return true;
        GdiRegion mapped;
        for (const QRectF& rectangle : region->rectangles) {
          mapped.rectangles.push_back(canvas_.transform().mapRect(rectangle));
        }
        canvas_.CombineClip(mapped, ClipMode::kCopy);
        return true;
      }
      default:
        return false;
    }
  }

  // Bottom, right, top, left.
  static QRectF RectAt(const RecordBytes& values, std::size_t at) {
    return RectOf(values.Signed16(at + 6), values.Signed16(at + 4), values.Signed16(at + 2),
                  values.Signed16(at));
  }

  static QPolygonF Points(const RecordBytes& values, std::size_t at, std::size_t count) {
    QPolygonF points;
    for (; count > 0 && at + 4 <= values.size(); --count, at += 4) {
      points.append(QPointF(values.Signed16(at), values.Signed16(at + 2)));
    }
    return points;
  }

  bool Shape(std::uint16_t function, const RecordBytes& values) {
    QPainterPath path;
    switch (function) {
      case kMoveTo:
        canvas_.MoveTo(QPointF(values.Signed16(2), values.Signed16(0)));
        return true;
      case kLineTo:
        path.moveTo(canvas_.state().position);
        path.lineTo(values.Signed16(2), values.Signed16(0));
        canvas_.Continue(path);
        return true;
      case kPolyline:
        path.addPolygon(Points(values, 2, values.Unsigned16(0)));
        canvas_.Line(path);
        return true;
      case kPolygon:
        path.addPolygon(Points(values, 2, values.Unsigned16(0)));
        path.closeSubpath();
        canvas_.Area(path);
        return true;
      case kPolyPolygon: {
        const std::size_t count = values.Unsigned16(0);
        std::size_t at = 2 + 2 * count;
        for (std::size_t i = 0; i < count && at < values.size(); ++i) {
          const std::size_t points = values.Unsigned16(2 + 2 * i);
          path.addPolygon(Points(values, at, points));
          path.closeSubpath();
          at += 4 * points;
        }
        canvas_.Area(path);
        return true;
      }
      case kRectangle:
        path.addRect(RectAt(values, 0));
        canvas_.Area(path);
        return true;
      case kSetPixel:
        canvas_.Pixel(QPointF(values.Signed16(6), values.Signed16(4)), ColourAt(values, 0));
        return true;
      case kFillRegion:
      case kFrameRegion:
      case kPaintRegion:
      case kInvertRegion:
        Region(function, values);
        return true;
      default:
        return false;
    }
  }

  void Region(std::uint16_t function, const RecordBytes& values) {
    const auto* region = std::get_if<GdiRegion>(&objects_.At(values.Unsigned16(0)));
    const auto* brush = std::get_if<GdiBrush>(&objects_.At(values.Unsigned16(2)));
    if (region == nullptr) return canvas_.output().LeaveOut();
    if (function == kPaintRegion) return canvas_.Region(*region, canvas_.state().brush);
    if (function == kInvertRegion) return canvas_.InvertRegion(*region);
    if (brush == nullptr) return canvas_.output().LeaveOut();
    if (function == kFillRegion) return canvas_.Region(*region, *brush);
    canvas_.RegionFrame(*region, *brush, QSizeF(values.Signed16(6), values.Signed16(4)));
  }

  bool RoundShape(std::uint16_t function, const RecordBytes& values) {
    QPainterPath path;
    const QPointF to(values.Signed16(2), values.Signed16(0));
    const QPointF from(values.Signed16(6), values.Signed16(4));
    switch (function) {
      case kEllipse:
        path.addEllipse(RectAt(values, 0));
        canvas_.Area(path);
        return true;
      case kRoundRect:
        path.addRoundedRect(RectAt(values, 4), std::abs(to.x()) / 2, std::abs(to.y()) / 2);
        canvas_.Area(path);
        return true;
      case kArc:
        canvas_.Arc(ArcKind::kArc, RectAt(values, 8), from, to);
        return true;
      case kPie:
        canvas_.Arc(ArcKind::kPie, RectAt(values, 8), from, to);
        return true;
      case kChord:
        canvas_.Arc(ArcKind::kChord, RectAt(values, 8), from, to);
        return true;
      default:
        return false;
    }
  }

  bool Text(std::uint16_t function, const RecordBytes& values) {
    CanvasText text;
    const GdiFont& font = canvas_.state().font;
    if (function == kTextOut) {
      const std::size_t length = values.Unsigned16(0);
      const std::size_t after = 2 + (length + 1) / 2 * 2;
      text.text.at = QPointF(values.Signed16(after + 2), values.Signed16(after));
      text.text.text = TextOf(values.Part(2, length).bytes(), font);
    } else if (function == kExtTextOut) {
      constexpr unsigned kFillBox = 2, kClipToBox = 4;
      const std::size_t length = values.Unsigned16(4);
      const unsigned options = values.Unsigned16(6);
      std::size_t at = 8;
      text.text.at = QPointF(values.Signed16(2), values.Signed16(0));
      if ((options & (kFillBox | kClipToBox)) != 0) {
        text.box = RectOf(values.Signed16(8), values.Signed16(10), values.Signed16(12),
                          values.Signed16(14));
        text.fill_box = (options & kFillBox) != 0;
        text.clip_to_box = (options & kClipToBox) != 0;
        at += 8;
      }
      text.text.text = TextOf(values.Part(at, length).bytes(), font);
      at += (length + 1) / 2 * 2;
      // One advance a byte: those of double-byte characters are not told apart.
      if (values.size() >= at + 2 * length && text.text.text.size() == qsizetype(length)) {
        for (std::size_t i = 0; i < length; ++i) {
          text.text.advances.push_back(values.Signed16(at + 2 * i));
        }
      }
    } else {
      return false;
    }
    if ((canvas_.state().text.align & kAlignUpdatePosition) != 0) {
      text.text.at = canvas_.state().position;
    }
    canvas_.Text(text);
    return true;
  }

  RecordBytes file_;
  MetafileCanvas canvas_;
  GdiObjects objects_;
  QSizeF size_{3 * kTwipsPerInch, 3 * kTwipsPerInch};
  std::optional<QRectF> frame_;
  std::size_t start_ = 0;
  bool has_window_ = false;
  std::string enhanced_;
  std::size_t enhanced_size_ = 0;
};

}  // namespace

std::shared_ptr<const Drawing> PlayWmf(std::string_view wmf) { return WmfPlayer(wmf).Play(); }

}  // namespace tenora::printing
