#include "platform/printing/image/emf_player.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "platform/printing/image/emf_bitmaps.h"
#include "platform/printing/image/emf_record.h"
#include "platform/printing/image/emf_shapes.h"
#include "platform/printing/image/metafile.h"
#include "platform/printing/image/metafile_canvas.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kHeader = 88, kRecordHeader = 8;
constexpr std::uint32_t kStockObject = 0x80000000;

// Pixels of the reference device to the millimetre; a usual screen's where the header gives none.
QSizeF DeviceResolution(const RecordBytes& file) {
  constexpr double kScreen = 96 / 25.4;
  const auto along = [&](std::size_t pixels_at, std::size_t millimetres_at) {
    const double pixels = file.Signed32(pixels_at), millimetres = file.Signed32(millimetres_at);
    return pixels > 0 && millimetres > 0 ? pixels / millimetres : kScreen;
  };
  return {along(72, 80), along(76, 84)};
}

GdiObject StockObject(std::uint32_t number) {
  constexpr std::uint32_t kDcBrush = 18, kDcPen = 19;
  constexpr unsigned kSolidBrush = 0, kHollow = 1, kSolidPen = 0, kNullPen = 5;
  static constexpr int kGreys[] = {255, 192, 128, 64, 0};
  if (number < std::size(kGreys)) {
    const int grey = kGreys[number];
    return BrushFrom(kSolidBrush, QColor(grey, grey, grey), 0);
  }
  switch (number) {
    case 5:
      return BrushFrom(kHollow, Qt::white, 0);
    case 6:
      return PenFrom(kSolidPen, 0, Qt::white);
    case 7:
    case kDcPen:
      return PenFrom(kSolidPen, 0, Qt::black);
    case 8:
      return PenFrom(kNullPen, 0, Qt::black);
    case kDcBrush:
      return BrushFrom(kSolidBrush, Qt::white, 0);
    default:
      return number >= 10 && number <= 17 && number != 15 ? GdiObject(GdiFont()) : GdiOther{};
  }
}

QString WideText(const RecordBytes& bytes) {
  QString text;
  text.reserve(static_cast<qsizetype>(bytes.size() / 2));
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) text += QChar(bytes.Unsigned16(at));
  return text;
}

GdiFont FontFrom(const EmfRecord& record) {
  GdiFont font;
  font.height = record.Signed(12);
  font.width = record.Signed(16);
  font.escapement = record.Signed(20) / 10.0;
  font.weight = record.Signed(28);
  font.italic = record.bytes.Byte(32) != 0;
  font.underline = record.bytes.Byte(33) != 0;
  font.strike_out = record.bytes.Byte(34) != 0;
  font.charset = record.bytes.Byte(35);
  font.pitch_and_family = record.bytes.Byte(39);
  const QString name = WideText(record.bytes.Part(40, 64));
  font.family = name.left(std::max<qsizetype>(name.indexOf(QChar(0)), 0));
  if (!name.contains(QChar(0))) font.family = name;
  return font;
}

GdiPen ExtendedPen(const EmfRecord& record) {
  constexpr std::uint32_t kGeometric = 0x10000, kUserStyle = 7, kNullBrush = 1;
  const std::uint32_t style = record.Number(28);
  const bool geometric = (style & kGeometric) != 0;
  GdiPen pen = PenFrom(style, geometric ? record.Number(32) : 0, record.Colour(40));
  if (record.Number(36) == kNullBrush) pen.style = Qt::NoPen;
  if ((style & 0xF) != kUserStyle || pen.style == Qt::NoPen) return pen;
  const std::size_t count = std::min<std::size_t>(record.Number(48), 16);
  for (std::size_t i = 0; i < count; ++i) {
    pen.dashes.append(std::clamp(double(record.Number(52 + 4 * i)), 0.1, 1e6));
  }
  if (pen.dashes.size() % 2 != 0) pen.dashes.append(pen.dashes);
  pen.style = pen.dashes.isEmpty() ? Qt::SolidLine : Qt::CustomDashLine;
  return pen;
}

GdiRegion RegionAt(const EmfRecord& record, std::size_t at) {
  GdiRegion region;
  const std::size_t first = at + record.Number(at);
  for (std::uint32_t i = 0; i < record.Number(at + 8); ++i) {
    const std::size_t rectangle = first + std::size_t{i} * 16;
    if (rectangle + 16 > record.bytes.size()) break;
    region.rectangles.push_back(record.Rect(rectangle));
  }
  return region;
}

class EmfPlayer {
 public:
  explicit EmfPlayer(std::string_view emf)
      : file_(emf), canvas_(DeviceResolution(RecordBytes(emf))) {}

  std::shared_ptr<const Drawing> Play() {
    const auto metafile = ReadMetafile(file_.bytes());
    if (!metafile || file_.size() < kHeader) {
      canvas_.output().LeaveOut();
      return canvas_.output().Take(QRectF(0, 0, 1, 1), QSizeF(1, 1));
    }
    std::size_t at = 0;
    bool ended = false;
    while (!ended && at + kRecordHeader <= file_.size() && !canvas_.output().full()) {
      const std::size_t size = file_.Unsigned32(at + 4);
      if (size < kRecordHeader || size > file_.size() - at) break;
      const EmfRecord record{static_cast<EmfType>(file_.Unsigned32(at)), file_.Part(at, size)};
      ended = record.type == EmfType::kEnd;
      if (!ended) Play(record);
      at += size;
    }
    const bool drawn = !canvas_.output().empty();
    if (!ended || (other_drawing_ && !(both_kinds_ && drawn))) canvas_.output().LeaveOut();
    return Take(QSizeF(std::abs(metafile->width), std::abs(metafile->height)));
  }

 private:
  std::shared_ptr<const Drawing> Take(QSizeF size) {
    const EmfRecord header{EmfType::kHeader, file_};
    const QSizeF resolution = DeviceResolution(file_) / 100;
    const QRectF hundredths = header.Rect(24);
    QRectF frame(hundredths.x() * resolution.width(), hundredths.y() * resolution.height(),
                 hundredths.width() * resolution.width(),
                 hundredths.height() * resolution.height());
    const QRectF drawn = canvas_.output().bounds();
    // A frame that shows nothing of what is drawn is none.
    const bool empty = canvas_.output().empty();
    if (frame.isEmpty() || (!empty && !frame.intersects(drawn))) {
      frame = empty ? QRectF(0, 0, 1, 1) : drawn;
    }
    if (size.isEmpty()) {
      constexpr double kTwipsPerHundredthMillimetre = 1440.0 / 2540;
      size = QSizeF(frame.width() / resolution.width(), frame.height() / resolution.height()) *
             kTwipsPerHundredthMillimetre;
    }
    return canvas_.output().Take(frame, size);
  }

  void Play(const EmfRecord& record) {
    if (!PlayEmfShape(record, canvas_) && !PlayEmfBitmap(record, canvas_) && !Context(record) &&
        !Coordinates(record) && !Object(record) && !Path(record) && !Clipping(record) &&
        !Region(record) && !Text(record) && !IsSilent(record)) {
      canvas_.output().LeaveOut();
    }
  }

  bool Context(const EmfRecord& record) {
    CanvasState& state = canvas_.state();
    const std::uint32_t value = record.Number(8);
    switch (record.type) {
      case EmfType::kSaveDc:
        canvas_.Save();
        return true;
      case EmfType::kRestoreDc:
        canvas_.Restore(record.Signed(8));
        return true;
      case EmfType::kSetBkMode:
        state.opaque = value == 2;
        return true;
      case EmfType::kSetPolyFillMode:
        state.fill_rule = value == 2 ? Qt::WindingFill : Qt::OddEvenFill;
        return true;
      case EmfType::kSetRop2:
        state.operation = static_cast<int>(std::clamp<std::uint32_t>(value, 1, 16)) - 1;
        return true;
      case EmfType::kSetTextAlign:
        state.text.align = value;
        return true;
      case EmfType::kSetTextColour:
        state.text.colour = record.Colour(8);
        return true;
      case EmfType::kSetBkColour:
        state.ground_colour = record.Colour(8);
        return true;
      case EmfType::kSetTextJustification:
        state.text.word_spacing =
            double(record.Signed(8)) / std::max<std::int32_t>(record.Signed(12), 1);
        return true;
      case EmfType::kSetArcDirection:
        state.clockwise = value == 2;
        return true;
      case EmfType::kSetMiterLimit: {
        // A whole number from some programs, a floating-point one from others.
        const double limit = value < 0x10000 ? double(value) : double(std::bit_cast<float>(value));
        state.miter_limit = limit >= 1 && limit < 1000 ? limit : 10;
        return true;
      }
      case EmfType::kComment:
        Comment(record);
        return true;
      default:
        return false;
    }
  }

  // The newer kind of record (EMF+) stands in comments. A file may have each thing twice, once in
  // either kind.
  void Comment(const EmfRecord& record) {
    constexpr std::uint32_t kPlus = 0x2B464D45;
    constexpr int kPlusHeader = 0x4001, kFirstDrawing = 0x4009, kLastDrawing = 0x401C;
    constexpr int kDriverString = 0x4036, kStrokeFillPath = 0x4037;
    if (record.Number(12) != kPlus) return;
    std::size_t at = 16;
    while (at + 12 <= record.bytes.size()) {
      const int type = record.bytes.Unsigned16(at);
      if (type == kPlusHeader) both_kinds_ = (record.bytes.Byte(at + 2) & 1) != 0;
      other_drawing_ = other_drawing_ || (type >= kFirstDrawing && type <= kLastDrawing) ||
                       type == kDriverString || type == kStrokeFillPath;
      const std::uint32_t size = record.Number(at + 4);
      if (size < 12) break;
      at += size;
    }
  }

  bool Coordinates(const EmfRecord& record) {
    CanvasState& state = canvas_.state();
    const auto scale = [&](QSizeF& extent) {
      const auto factor = [&](std::size_t at) {
        const double denominator = record.Signed(at + 4);
        return denominator == 0 ? 1 : record.Signed(at) / denominator;
      };
      extent = QSizeF(extent.width() * factor(8), extent.height() * factor(16));
    };
    switch (record.type) {
      case EmfType::kSetMapMode:
        state.map_mode = static_cast<int>(record.Number(8) & 0xF);
        break;
      case EmfType::kSetWindowExt:
        state.window_extent = record.Size(8);
        break;
      case EmfType::kSetWindowOrg:
        state.window_origin = record.Point(8);
        break;
      case EmfType::kSetViewportExt:
        state.viewport_extent = record.Size(8);
        break;
      case EmfType::kSetViewportOrg:
        state.viewport_origin = record.Point(8);
        break;
      case EmfType::kScaleViewportExt:
        scale(state.viewport_extent);
        break;
      case EmfType::kScaleWindowExt:
        scale(state.window_extent);
        break;
      case EmfType::kSetWorldTransform:
        state.world = record.Transform(8);
        break;
      case EmfType::kModifyWorldTransform:
        ModifyWorld(record.Number(32), record.Transform(8));
        break;
      default:
        return false;
    }
    canvas_.UpdateTransform();
    return true;
  }

  void ModifyWorld(std::uint32_t mode, const QTransform& transform) {
    constexpr std::uint32_t kIdentity = 1, kLeft = 2, kRight = 3;
    QTransform& world = canvas_.state().world;
    if (mode == kIdentity) {
      world = QTransform();
    } else if (mode == kLeft) {
      world = transform * world;
    } else if (mode == kRight) {
      world = world * transform;
    } else {
      world = transform;
    }
  }

  bool Object(const EmfRecord& record) {
    const std::uint32_t number = record.Number(8);
    switch (record.type) {
      case EmfType::kSelectObject:
        canvas_.Select((number & kStockObject) != 0 ? StockObject(number & ~kStockObject)
                                                    : objects_.At(number));
        return true;
      case EmfType::kDeleteObject:
        objects_.Delete(number);
        return true;
      case EmfType::kCreatePen:
        objects_.Set(number, PenFrom(record.Number(12), record.Signed(16), record.Colour(24)));
        return true;
      case EmfType::kExtCreatePen:
        objects_.Set(number, ExtendedPen(record));
        return true;
      case EmfType::kCreateBrush:
        objects_.Set(number, BrushFrom(record.Number(12), record.Colour(16), record.Number(20)));
        return true;
      case EmfType::kCreateMonoBrush:
      case EmfType::kCreateDibPatternBrush: {
        GdiBrush brush;
        brush.kind = GdiBrush::Kind::kPattern;
        brush.pattern = EmfBitmap(record, 16, canvas_);
        brush.two_colours = record.type == EmfType::kCreateMonoBrush;
        objects_.Set(number, std::move(brush));
        return true;
      }
      case EmfType::kCreateFont:
        objects_.Set(number, FontFrom(record));
        return true;
      case EmfType::kCreatePalette:
      case EmfType::kCreateColourSpace:
      case EmfType::kCreateColourSpaceW:
        objects_.Set(number, GdiOther{});
        return true;
      default:
        return false;
    }
  }

  bool Path(const EmfRecord& record) {
    switch (record.type) {
      case EmfType::kBeginPath:
        canvas_.BeginPath();
        return true;
      case EmfType::kEndPath:
        canvas_.EndPath();
        return true;
      case EmfType::kAbortPath:
        canvas_.AbortPath();
        return true;
      case EmfType::kCloseFigure:
        canvas_.CloseFigure();
        return true;
      case EmfType::kWidenPath:
        canvas_.WidenPath();
        return true;
      case EmfType::kFlattenPath:
        return true;
      case EmfType::kFillPath:
      case EmfType::kStrokePath:
      case EmfType::kStrokeAndFillPath:
        canvas_.PaintPath(record.type != EmfType::kStrokePath, record.type != EmfType::kFillPath);
        return true;
      case EmfType::kSelectClipPath:
        canvas_.ClipToPath(ModeFrom(record.Number(8)));
        return true;
      default:
        return false;
    }
  }

  static ClipMode ModeFrom(std::uint32_t number) {
    return number >= 1 && number <= 5 ? static_cast<ClipMode>(number) : ClipMode::kCopy;
  }

  bool Clipping(const EmfRecord& record) {
    switch (record.type) {
      case EmfType::kIntersectClipRect:
        canvas_.IntersectClip(record.Rect(8));
        return true;
      case EmfType::kExcludeClipRect:
        canvas_.ExcludeClip(record.Rect(8));
        return true;
      case EmfType::kOffsetClipRegion:
        canvas_.OffsetClip(record.Point(8));
        return true;
      case EmfType::kSelectClipRegion:
        if (record.Number(8) == 0) {
          canvas_.state().clip = nullptr;
        } else {
          canvas_.CombineClip(RegionAt(record, 16), ModeFrom(record.Number(12)));
        }
        return true;
      default:
        return false;
    }
  }

  bool Region(const EmfRecord& record) {
    const auto* brush = std::get_if<GdiBrush>(&BrushAt(record.Number(28)));
    switch (record.type) {
      case EmfType::kFillRegion:
        if (brush != nullptr) canvas_.Region(RegionAt(record, 32), *brush);
        return true;
      case EmfType::kFrameRegion:
        if (brush != nullptr) canvas_.RegionFrame(RegionAt(record, 40), *brush, record.Size(32));
        return true;
      case EmfType::kInvertRegion:
        canvas_.InvertRegion(RegionAt(record, 28));
        return true;
      case EmfType::kPaintRegion:
        canvas_.Region(RegionAt(record, 28), canvas_.state().brush);
        return true;
      default:
        return false;
    }
  }

  const GdiObject& BrushAt(std::uint32_t number) {
    if ((number & kStockObject) == 0) return objects_.At(number);
    stock_ = StockObject(number & ~kStockObject);
    return stock_;
  }

  bool Text(const EmfRecord& record) {
    constexpr std::uint32_t kMostLines = 1000;
    switch (record.type) {
      case EmfType::kTextA:
      case EmfType::kTextW:
        TextAt(record, 36, record.type == EmfType::kTextW);
        return true;
      case EmfType::kPolyTextA:
      case EmfType::kPolyTextW:
        for (std::uint32_t i = 0; i < std::min(record.Number(36), kMostLines); ++i) {
          TextAt(record, 40 + std::size_t{i} * 40, record.type == EmfType::kPolyTextW);
        }
        return true;
      case EmfType::kSmallText:
        SmallText(record);
        return true;
      default:
        return false;
    }
  }

  static constexpr std::uint32_t kFillBox = 2, kClipToBox = 4, kGlyphNumbers = 0x10, kNoBox = 0x100,
                                 kSmallCharacters = 0x200, kAdvancePairs = 0x2000;
  static constexpr std::uint32_t kAdvanced = 2;

  // The text's description stands at `at`: point, length, offset, options, box, advances.
  void TextAt(const EmfRecord& record, std::size_t at, bool wide) {
    const std::size_t length = record.Number(at + 8);
    const std::uint32_t options = record.Number(at + 16);
    CanvasText text;
    text.text.at = record.Point(at);
    if ((options & kNoBox) == 0 && (options & (kFillBox | kClipToBox)) != 0) {
      text.box = record.Rect(at + 20);
    }
    if (length <= record.bytes.size()) {
      const RecordBytes bytes =
          record.bytes.Part(record.Number(at + 12), wide ? length * 2 : length);
      text.text.text = wide ? WideText(bytes) : TextOf(bytes.bytes(), canvas_.state().font);
      const std::size_t advances = record.Number(at + 36);
      const std::size_t step = (options & kAdvancePairs) != 0 ? 8 : 4;
      if (advances != 0 && advances + length * step <= record.bytes.size()) {
        for (std::size_t i = 0; i < length; ++i) {
          text.text.advances.push_back(record.Signed(advances + i * step));
        }
      }
    }
    Draw(text, options, record.Number(24));
  }

  void SmallText(const EmfRecord& record) {
    const std::size_t length = record.Number(16);
    const std::uint32_t options = record.Number(20);
    CanvasText text;
    text.text.at = record.Point(8);
    std::size_t at = 36;
    if ((options & kNoBox) == 0) {
      text.box = record.Rect(at);
      at += 16;
    }
    if (length <= record.bytes.size()) {
      const bool small = (options & kSmallCharacters) != 0;
      const RecordBytes bytes = record.bytes.Part(at, small ? length : length * 2);
      text.text.text = small ? TextOf(bytes.bytes(), canvas_.state().font) : WideText(bytes);
    }
    Draw(text, options, record.Number(24));
  }

  void Draw(CanvasText& text, std::uint32_t options, std::uint32_t graphics_mode) {
    text.fill_box = text.box && (options & kFillBox) != 0;
    text.clip_to_box = text.box && (options & kClipToBox) != 0;
    text.text.upright = graphics_mode != kAdvanced;
    // The numbers of another computer's font.
    if ((options & kGlyphNumbers) != 0 && !text.text.text.isEmpty()) {
      text.text.text.clear();
      canvas_.output().LeaveOut();
    }
    if ((canvas_.state().text.align & kAlignUpdatePosition) != 0) {
      text.text.at = canvas_.state().position;
    }
    canvas_.Text(text);
  }

  // Records that show nothing.
  static bool IsSilent(const EmfRecord& record) {
    static constexpr EmfType kSilent[] = {
        EmfType::kHeader,
        EmfType::kSetBrushOrg,
        EmfType::kSetMapperFlags,
        EmfType::kSetStretchBltMode,
        EmfType::kSetColourAdjustment,
        EmfType::kSetMetaRegion,
        EmfType::kSelectPalette,
        EmfType::kSetPaletteEntries,
        EmfType::kResizePalette,
        EmfType::kRealizePalette,
        EmfType::kSetIcmMode,
        EmfType::kSetColourSpace,
        EmfType::kDeleteColourSpace,
        EmfType::kPixelFormat,
        EmfType::kExtEscape,
        EmfType::kForceUfiMapping,
        EmfType::kNamedEscape,
        EmfType::kColourCorrectPalette,
        EmfType::kSetIcmProfileA,
        EmfType::kSetIcmProfileW,
        EmfType::kSetLayout,
        EmfType::kSetLinkedUfis,
        EmfType::kColourMatchToTarget,
    };
    return std::ranges::find(kSilent, record.type) != std::end(kSilent);
  }

  RecordBytes file_;
  MetafileCanvas canvas_;
  GdiObjects objects_;
  GdiObject stock_;
  bool other_drawing_ = false, both_kinds_ = false;
};

}  // namespace

std::shared_ptr<const Drawing> PlayEmf(std::string_view emf) { return EmfPlayer(emf).Play(); }

}  // namespace tenora::printing
