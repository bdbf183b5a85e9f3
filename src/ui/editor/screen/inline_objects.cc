#include "ui/editor/screen/inline_objects.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <algorithm>

#include "ui/editor/text/letter_formats.h"

namespace tenora {
namespace {

using Kind = InlineObject::Kind;

constexpr double kWidest = 10800, kTallest = 14400;  // twips
constexpr double kFrameWidth = 1600, kFrameHeight = 300;
constexpr double kFloatingGap = 115;  // as on paper
constexpr std::size_t kMostRendered = 32;
constexpr double kLeastBreakWidth = 3000, kBreakHeight = 200;

double PixelsPerTwip(const QTextDocument& document) {
  const QPaintDevice* device = document.documentLayout()->paintDevice();
  return (device == nullptr ? 96 : device->logicalDpiX()) / 1440.0;
}

// Of the document's lines, pixels: what stands after a break is on the next line then.
double LineWidth(const QTextDocument& document) {
  const QTextFrameFormat page = document.rootFrame()->frameFormat();
  const double enlarged = PixelsPerTwip(document) / PixelsOfTwips(1);
  return document.pageSize().width() - (page.leftMargin() + page.rightMargin()) * enlarged - 1;
}

std::shared_ptr<const richtext::Picture> PictureOf(const InlineObject& object) {
  if (object.runs.empty()) return nullptr;
  const richtext::Run& run = object.runs.front();
  if (const auto* own = std::get_if<std::shared_ptr<const richtext::Picture>>(&run.object))
    return *own;
  if (const auto* verbatim = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object))
    return (*verbatim)->shown_picture;
  return nullptr;
}

// The text shown in a frame in place of an object that cannot be drawn.
QString Label(const InlineObject& object) {
  if (object.runs.empty()) return {};
  const auto* run =
      std::get_if<std::shared_ptr<const richtext::Verbatim>>(&object.runs.front().object);
  const QString text = run == nullptr ? QString() : QString::fromStdString((*run)->shown_text);
  return text.trimmed().isEmpty() ? InlineObjects::tr("Object") : text.simplified();
}

// The Unicode character for a glyph of a symbol font.
QString SymbolText(const InlineObject& object) { return QString::fromStdString(object.shown_text); }

// True where nothing in the block has a width.
bool IsEmptyToSee(const QTextBlock& block) {
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    const auto object = SharedProperty<InlineObject>(it.fragment().charFormat(), kObjectProperty);
    if (object == nullptr || (object->kind != Kind::kPad && object->kind != Kind::kMark &&
                              object->kind != Kind::kHidden))
      return false;
  }
  return true;
}

QFont FontOn(const QTextDocument& document, const QTextFormat& format) {
  QPaintDevice* device = document.documentLayout()->paintDevice();
  const QFont font = format.toCharFormat().font();
  return device == nullptr ? font : QFont(font, device);
}

}  // namespace

QRectF InlineObjects::WithoutGap(const QRectF& place, const QTextDocument& document,
                                 const QTextFormat& format) {
  const auto* frame = qobject_cast<QTextFrame*>(document.objectForFormat(format));
  if (frame == nullptr) return place;
  const double gap = kFloatingGap * PixelsPerTwip(document);
  const bool left = frame->frameFormat().position() == QTextFrameFormat::FloatLeft;
  return place.adjusted(left ? 0 : gap, 0, left ? -gap : 0, 0);
}

double InlineObjects::MostWidth(const QTextDocument& document) {
  const int page = document.rootFrame()->frameFormat().intProperty(kPageTextWidth);
  return (page > 0 ? page : kWidest) * PixelsPerTwip(document);
}

double InlineObjects::MostHeight(const QTextDocument& document) {
  return kTallest * PixelsPerTwip(document);
}

// `most_width` in twips.
printing::PlacedPicture InlineObjects::Placed(const InlineObject& object, double most_width) {
  const auto picture = PictureOf(object);
  return picture == nullptr ? printing::PlacedPicture()
                            : pictures_.Place(*picture, most_width, kTallest);
}

void InlineObjects::Draw(QPainter& painter, const QRectF& rect,
                         const printing::PlacedPicture& picture) {
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  if (picture.drawing == nullptr) return printing::DrawPicture(painter, rect, picture);
  const QSize pixels = (rect.size() * painter.device()->devicePixelRatioF()).toSize();
  if (rendered_.size() > kMostRendered) rendered_.clear();
  QImage& image = rendered_[{picture.drawing, picture.crop}];
  if (image.size() != pixels) image = printing::Rendered(picture, pixels.expandedTo({1, 1}));
  painter.drawImage(rect, image);
}

QSizeF InlineObjects::intrinsicSize(QTextDocument* document, int position,
                                    const QTextFormat& format) {
  const auto object = SharedProperty<InlineObject>(format, kObjectProperty);
  if (object == nullptr) return {};
  const double scale = PixelsPerTwip(*document);
  const QFontMetricsF metrics(FontOn(*document, format));
  switch (object->kind) {
    case Kind::kPicture:
    case Kind::kVerbatim: {
      const bool floats = format.objectIndex() >= 0;
      const double most = floats ? kWidest : MostWidth(*document) / scale;
      const printing::PlacedPicture placed = Placed(*object, most);
      const double gap = floats ? kFloatingGap : 0;
      if (placed.width > 0) return QSizeF(placed.width + gap, placed.height) * scale;
      const double width = metrics.horizontalAdvance(Label(*object)) + 200 * scale;
      return {std::min(width, kWidest * scale), std::max(metrics.height(), kFrameHeight * scale)};
    }
    case Kind::kPageBreak:
    case Kind::kSection:
      return {std::max(LineWidth(*document), kLeastBreakWidth * scale), kBreakHeight * scale};
    case Kind::kCharacter:
      return {metrics.horizontalAdvance(SymbolText(*object)), metrics.ascent()};
    default:
      // A line of objects alone is as high as they are.
      return {0, IsEmptyToSee(document->findBlock(position)) ? metrics.height() : 0};
  }
}

void InlineObjects::drawObject(QPainter* painter, const QRectF& rect, QTextDocument* document,
                               int /*position*/, const QTextFormat& format) {
  const auto object = SharedProperty<InlineObject>(format, kObjectProperty);
  if (object == nullptr || rect.isEmpty()) return;
  painter->save();
  const QFont font = FontOn(*document, format);
  const QTextCharFormat shown = format.toCharFormat();
  const bool coloured = shown.foreground().style() == Qt::SolidPattern;
  if (object->kind == Kind::kCharacter) {
    painter->setFont(font);
    if (coloured) painter->setPen(shown.foreground().color());
    painter->drawText(rect, Qt::AlignCenter | Qt::TextDontClip, SymbolText(*object));
  } else if (object->kind == Kind::kPageBreak || object->kind == Kind::kSection) {
    painter->setPen(QPen(Qt::gray, 1, Qt::DashLine));
    const int lines = object->kind == Kind::kSection ? 2 : 1;
    for (int line = 1; line <= lines; ++line) {
      const double y = rect.top() + rect.height() * line / (lines + 1);
      painter->drawLine(QPointF(rect.left(), y), QPointF(rect.right(), y));
    }
  } else {
    const printing::PlacedPicture placed = Placed(*object, kWidest);
    if (placed.readable()) {
      Draw(*painter, WithoutGap(rect, *document, format), placed);
    } else {
      painter->setFont(font);
      painter->setPen(Qt::gray);
      painter->drawRect(rect.adjusted(0.5, 0.5, -0.5, -0.5));
      const QString label =
          placed.caption.empty() ? Label(*object) : QString::fromStdString(placed.caption);
      painter->drawText(rect.adjusted(3, 0, -3, 0), Qt::AlignVCenter,
                        QFontMetricsF(font).elidedText(label, Qt::ElideRight, rect.width() - 6));
    }
  }
  painter->restore();
}

}  // namespace tenora
