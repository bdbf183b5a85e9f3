#include "platform/printing/image/wmf_player.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "platform/printing/image/emf_player.h"
#include "platform/printing/image/metafile.h"
#include "platform/printing/image/metafile_canvas.h"
#include "platform/printing/image/record_bytes.h"

namespace tenora::printing {
namespace {

constexpr double kTwipsPerInch = 1440, kTwipsPerPixel = 15;
constexpr double kTwipsPerMillimetre = kTwipsPerInch / 25.4;
constexpr std::size_t kHeader = 18, kRecordHeader = 6;

enum Function : std::uint16_t {
  kEnd = 0x0000,
  kSaveDc = 0x001E,
  kRealizePalette = 0x0035,
  kSetPaletteEntries = 0x0037,
  kCreatePalette = 0x00F7,
  kSetBkMode = 0x0102,
  kSetMapMode = 0x0103,
  kSetRop2 = 0x0104,
  kSetRelAbs = 0x0105,
  kSetPolyFillMode = 0x0106,
  kSetStretchBltMode = 0x0107,
  kSetTextCharExtra = 0x0108,
  kRestoreDc = 0x0127,
  kInvertRegion = 0x012A,
  kPaintRegion = 0x012B,
  kSelectClipRegion = 0x012C,
  kSelectObject = 0x012D,
  kSetTextAlign = 0x012E,
  kResizePalette = 0x0139,
  kDibCreatePatternBrush = 0x0142,
  kSetLayout = 0x0149,
  kDeleteObject = 0x01F0,
  kCreatePatternBrush = 0x01F9,
  kSetBkColour = 0x0201,
  kSetTextColour = 0x0209,
  kSetTextJustification = 0x020A,
  kSetWindowOrg = 0x020B,
  kSetWindowExt = 0x020C,
  kSetViewportOrg = 0x020D,
  kSetViewportExt = 0x020E,
  kOffsetWindowOrg = 0x020F,
  kOffsetViewportOrg = 0x0211,
  kLineTo = 0x0213,
  kMoveTo = 0x0214,
  kOffsetClipRegion = 0x0220,
  kFillRegion = 0x0228,
  kSetMapperFlags = 0x0231,
  kSelectPalette = 0x0234,
  kCreatePen = 0x02FA,
  kCreateFont = 0x02FB,
  kCreateBrush = 0x02FC,
  kPolygon = 0x0324,
  kPolyline = 0x0325,
  kScaleWindowExt = 0x0410,
  kScaleViewportExt = 0x0412,
  kExcludeClipRect = 0x0415,
  kIntersectClipRect = 0x0416,
  kEllipse = 0x0418,
  kRectangle = 0x041B,
  kSetPixel = 0x041F,
  kFrameRegion = 0x0429,
  kAnimatePalette = 0x0436,
  kTextOut = 0x0521,
  kPolyPolygon = 0x0538,
  kRoundRect = 0x061C,
  kPatBlt = 0x061D,
  kEscape = 0x0626,
  kCreateRegion = 0x06FF,
  kArc = 0x0817,
  kPie = 0x081A,
  kChord = 0x0830,
  kBitBlt = 0x0922,
  kDibBitBlt = 0x0940,
  kExtTextOut = 0x0A32,
  kStretchBlt = 0x0B23,
  kDibStretchBlt = 0x0B41,
  kSetDibToDevice = 0x0D33,
  kStretchDib = 0x0F43,
};

int TernaryOperation(const RecordBytes& values) { return values.Byte(2); }

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
        !Text(function, values) && !Bitmap(function, values)) {
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

  // A monochrome bitmap of the device; rows are whole words, from the top.
  QImage DeviceBitmap(const RecordBytes& bitmap, std::size_t bits_at) {
    const int width = bitmap.Signed16(2), height = bitmap.Signed16(4), stride = bitmap.Signed16(6);
    const RecordBytes bits = bitmap.From(bits_at);
    const bool monochrome = bitmap.Byte(8) == 1 && bitmap.Byte(9) == 1;
    if (!monochrome || width <= 0 || height <= 0 || stride < (width + 7) / 8 ||
        bits.size() < static_cast<std::size_t>(stride) * static_cast<std::size_t>(height)) {
      canvas_.output().LeaveOut();
      return {};
    }
    QImage image = QImage(reinterpret_cast<const uchar*>(bits.bytes().data()), width, height,
                          stride, QImage::Format_Mono)
                       .copy();
    image.setColorTable({canvas_.state().text.colour.rgb(), canvas_.state().ground_colour.rgb()});
    return image;
  }

  GdiBrush DevicePattern(const RecordBytes& values) {
    GdiBrush brush;
    brush.kind = GdiBrush::Kind::kPattern;
    brush.pattern = DeviceBitmap(values, 32);
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

  // The numbers from `at` on are height, width, y and x.
  static QRectF TargetAt(const RecordBytes& values, std::size_t at) {
    return {QPointF(values.Signed16(at + 6), values.Signed16(at + 4)),
            QSizeF(values.Signed16(at + 2), values.Signed16(at))};
  }

  bool Bitmap(std::uint16_t function, const RecordBytes& values) {
    // A bitmap record without a bitmap has two bytes in its place, and no more than its numbers.
    const bool bare = values.size() / 2 == static_cast<std::size_t>(function >> 8);
    const int operation = TernaryOperation(values);
    BitmapPlace place;
    switch (function) {
      case kPatBlt:
        place.target = TargetAt(values, 4);
        canvas_.Image({}, place, operation);
        return true;
      case kStretchDib:
        place.target = TargetAt(values, 14);
        place.source = TargetAt(values, 6);
        Draw(values.From(22), place, operation, true);
        return true;
      case kSetDibToDevice:
        place.target = TargetAt(values, 10);
        place.source = QRectF(QPointF(values.Signed16(8), values.Signed16(6)), place.target.size());
        Draw(values.From(18), place, kCopySource, true);
        return true;
      case kDibStretchBlt:
      case kStretchBlt:
        place.target = TargetAt(values, bare ? 14 : 12);
        place.source = TargetAt(values, 4);
        break;
      case kDibBitBlt:
      case kBitBlt:
        place.target = TargetAt(values, bare ? 10 : 8);
        place.source = QRectF(QPointF(values.Signed16(6), values.Signed16(4)), place.target.size());
        break;
      default:
        return false;
    }
    if (bare || !UsesSource(operation)) {
      if (UsesSource(operation))
        canvas_.output().LeaveOut();
      else
        canvas_.Image({}, place, operation);
      return true;
    }
    const bool stretched = function == kDibStretchBlt || function == kStretchBlt;
    const RecordBytes bitmap = values.From(stretched ? 20 : 16);
    if (function == kDibBitBlt || function == kDibStretchBlt) {
      Draw(bitmap, place, operation, false);
    } else {
      canvas_.Image(DeviceBitmap(bitmap, 10), place, operation);
    }
    return true;
  }

  void Draw(const RecordBytes& dib, BitmapPlace place, int operation, bool from_below) {
    const QImage image = canvas_.output().Bitmap(PartsOf(dib.bytes()), false);
    // Rows of a bitmap that is stored upside down are counted from its lower edge.
    if (from_below && dib.Signed32(8) > 0 && place.source.height() > 0) {
      place.source.moveTop(image.height() - place.source.bottom());
    }
    canvas_.Image(image, place, operation);
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
