#include "ui/editor/text/letter_formats.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/printing/fonts.h"
#include "platform/printing/symbol_fonts.h"
#include "platform/richtext/table_numbers.h"
#include "platform/runtime/text.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

using richtext::Alignment;
using richtext::CharFormat;
using richtext::ParagraphFormat;
using richtext::Underline;

constexpr double kTwipsPerInch = 1440;
constexpr std::size_t kRecentFormats = 64;

double ScreenDpi() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen == nullptr ? 96 : screen->logicalDotsPerInchY();
}

QTextCharFormat::UnderlineStyle ShownUnderline(Underline underline) {
  switch (underline) {
    case Underline::kNone:
      return QTextCharFormat::NoUnderline;
    case Underline::kDotted:
      return QTextCharFormat::DotLine;
    case Underline::kDash:
      return QTextCharFormat::DashUnderline;
    case Underline::kWave:
      return QTextCharFormat::WaveUnderline;
    default:
      return QTextCharFormat::SingleUnderline;
  }
}

Underline UnderlineOf(QTextCharFormat::UnderlineStyle style) {
  switch (style) {
    case QTextCharFormat::NoUnderline:
      return Underline::kNone;
    case QTextCharFormat::DotLine:
      return Underline::kDotted;
    case QTextCharFormat::DashUnderline:
      return Underline::kDash;
    case QTextCharFormat::WaveUnderline:
      return Underline::kWave;
    default:
      return Underline::kSingle;
  }
}

Qt::Alignment ShownAlignment(Alignment alignment) {
  switch (alignment) {
    case Alignment::kLeft:
      return Qt::AlignLeft | Qt::AlignAbsolute;
    case Alignment::kCentre:
      return Qt::AlignHCenter;
    case Alignment::kRight:
      return Qt::AlignRight | Qt::AlignAbsolute;
    case Alignment::kJustified:
    case Alignment::kDistributed:
      return Qt::AlignJustify;
  }
  return Qt::AlignLeft;
}

QTextOption::TabType ShownTab(richtext::TabStop::Kind kind) {
  switch (kind) {
    case richtext::TabStop::Kind::kRight:
      return QTextOption::RightTab;
    case richtext::TabStop::Kind::kCentre:
      return QTextOption::CenterTab;
    case richtext::TabStop::Kind::kDecimal:
      return QTextOption::DelimiterTab;
    default:
      return QTextOption::LeftTab;
  }
}

// Qt measures tab stops from the paragraph's indent, letters measure them from the margin.
QList<QTextOption::Tab> ShownTabs(const ParagraphFormat& format, int default_tab) {
  QList<QTextOption::Tab> tabs;
  const int indent = format.left_indent;
  int last = std::min(indent, indent + format.first_indent);
  if (format.first_indent < 0) tabs.append(QTextOption::Tab(0, QTextOption::LeftTab));
  for (const richtext::TabStop& stop : format.tabs) {
    if (stop.kind == richtext::TabStop::Kind::kBar) continue;
    last = std::max(last, stop.position);
    tabs.append(QTextOption::Tab(PixelsOfTwips(stop.position - indent), ShownTab(stop.kind),
                                 QLatin1Char('.')));
  }
  std::sort(tabs.begin(), tabs.end(),
            [](const auto& a, const auto& b) { return a.position < b.position; });
  if (tabs.isEmpty() && indent == 0) return tabs;
  constexpr int kDefaultStops = 12;
  const int step = std::max(default_tab, 100);
  int next = (std::max(last, 0) / step + 1) * step;
  for (int i = 0; i < kDefaultStops; ++i, next += step)
    tabs.append(QTextOption::Tab(PixelsOfTwips(next - indent), QTextOption::LeftTab));
  return tabs;
}

// `pitch` is the part of the height of Qt's lines that they are to have.
void SetLineHeight(const ParagraphFormat& format, double pitch, QTextBlockFormat* shown) {
  if (format.line_spacing == 0)
    return shown->setLineHeight(100 * pitch, QTextBlockFormat::ProportionalHeight);
  const double height = PixelsOfTwips(std::abs(format.line_spacing));
  if (format.line_spacing_multiple)
    shown->setLineHeight(format.line_spacing / 2.4 * pitch, QTextBlockFormat::ProportionalHeight);
  else if (format.line_spacing < 0)
    shown->setLineHeight(height, QTextBlockFormat::FixedHeight);
  else
    shown->setLineHeight(height, QTextBlockFormat::MinimumHeight);
}

}  // namespace

double PixelsOfTwips(double twips) { return twips * ScreenDpi() / kTwipsPerInch; }
double TwipsOfPixels(double pixels) { return pixels * kTwipsPerInch / ScreenDpi(); }

void LetterFormats::SetHead(richtext::Document head) {
  head_ = std::move(head);
  head_.blocks.clear();
  families_.clear();
  recent_.clear();
}

const QString& LetterFormats::Family(int font) {
  const auto found = families_.find(font);
  if (found != families_.end()) return found->second;
  const bool known = font >= 0 && font < static_cast<int>(head_.fonts.size());
  const auto index = static_cast<std::size_t>(known ? font : 0);
  return families_.emplace(font, printing::InstalledFamily(head_.fonts.at(index))).first->second;
}

bool LetterFormats::IsSymbol(int font) const {
  return printing::SymbolFontOf(FontName(font).toStdString()) != printing::SymbolFont::kNone;
}

std::string LetterFormats::ShownSymbol(int font, QChar glyph) const {
  return printing::WithUnicodeSymbols(QString(glyph),
                                      printing::SymbolFontOf(FontName(font).toStdString()))
      .toStdString();
}

QTextCharFormat LetterFormats::Mark(const CharFormat& format) {
  QTextCharFormat shown;
  shown.setFontFamilies({Family(format.font)});
  shown.setFontPointSize(std::clamp(format.half_points, 2, 3276) / 2.0);
  shown.setFontWeight(format.bold ? QFont::Bold : QFont::Normal);
  shown.setFontItalic(format.italic);
  shown.setFontKerning(printing::IsKerned(format));
  shown.setFontHintingPreference(QFont::PreferNoHinting);
  shown.setProperty(kCharProperty, QVariant::fromValue(format));
  return shown;
}

QTextCharFormat LetterFormats::Char(const CharFormat& format) {
  for (const auto& [known, shown] : recent_) {
    if (known == format) return shown;
  }
  QTextCharFormat shown = Mark(format);
  shown.setFontStrikeOut(format.strike);
  shown.setUnderlineStyle(ShownUnderline(format.underline));
  if (format.all_caps) shown.setFontCapitalization(QFont::AllUppercase);
  if (format.small_caps && !format.all_caps) shown.setFontCapitalization(QFont::SmallCaps);
  if (format.script == richtext::Script::kSuper)
    shown.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
  if (format.script == richtext::Script::kSub)
    shown.setVerticalAlignment(QTextCharFormat::AlignSubScript);
  if (format.raise_half_points != 0) {
    shown.setBaselineOffset(100.0 * format.raise_half_points / std::max(format.half_points, 2) /
                            1.2);
  }
  if (const QColor colour = ColourAt(format.colour); colour.isValid()) shown.setForeground(colour);
  if (const QColor colour = ColourAt(format.highlight); colour.isValid())
    shown.setBackground(colour);
  if (recent_.size() >= kRecentFormats) recent_.erase(recent_.begin());
  recent_.emplace_back(format, shown);
  return shown;
}

QTextBlockFormat LetterFormats::Paragraph(const ParagraphFormat& format) {
  QTextBlockFormat shown;
  shown.setProperty(kParagraphProperty, QVariant::fromValue(format));
  shown.setAlignment(ShownAlignment(format.alignment));
  // In units of the document's indent width, a twip: Qt scales indents with the zoom, margins not.
  shown.setIndent(format.left_indent);
  shown.setRightMargin(PixelsOfTwips(format.right_indent) * zoom_);
  int first = format.first_indent;
  // A list's mark is drawn where the first line begins, and the text follows it.
  if (format.bullet.kind != richtext::Bullet::Kind::kNone)
    first = first < 0 ? 0 : first + format.bullet.indent;
  shown.setTextIndent(PixelsOfTwips(first) * zoom_);
  // A block does not know its neighbours, so this space is left out at both ends of the list too.
  const bool spaced = format.contextual_style < 0;
  shown.setTopMargin(spaced ? PixelsOfTwips(format.space_before) : 0);
  shown.setBottomMargin(spaced ? PixelsOfTwips(format.space_after) : 0);
  SetLineHeight(format, 1, &shown);
  const QList<QTextOption::Tab> tabs = ShownTabs(format, head_.default_tab);
  if (!tabs.isEmpty()) shown.setTabPositions(tabs);
  shown.setNonBreakableLines(false);
  shown.setLayoutDirection(format.right_to_left ? Qt::RightToLeft : Qt::LeftToRight);
  // Set even where there is none: without it an empty block before a table has no height in Qt.
  const QColor shading = ColourAt(format.shading);
  shown.setBackground(shading.isValid() ? QBrush(shading) : QBrush(Qt::NoBrush));
  return shown;
}

// None where a picture in the line sets its height.
std::optional<CharFormat> LetterFormats::MainText(const QTextBlock& block) {
  QTextCharFormat longest = block.charFormat();
  int length = 0;
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    const QTextFragment fragment = it.fragment();
    const QTextCharFormat format = fragment.charFormat();
    if (format.objectType() == QTextFormat::NoObject) {
      if (fragment.length() <= length) continue;
      length = fragment.length();
      longest = format;
    } else if (const auto object = SharedProperty<InlineObject>(format, kObjectProperty)) {
      const bool high = object->kind == InlineObject::Kind::kPicture ||
                        object->kind == InlineObject::Kind::kVerbatim;
      if (high && format.objectIndex() < 0) return std::nullopt;
    }
  }
  return CharOf(longest);
}

QTextBlockFormat LetterFormats::Fitted(const ParagraphFormat& format, const QTextBlock& block) {
  QTextBlockFormat shown = Paragraph(format);
  if (format.line_spacing != 0 && !format.line_spacing_multiple) return shown;
  if (const auto text = MainText(block))
    SetLineHeight(format, fits_.Of(Family(text->font), *text).line_pitch, &shown);
  return shown;
}

void LetterFormats::FitLines(QTextCursor* cursor) {
  const QTextBlockFormat format = cursor->blockFormat();
  if (!format.hasProperty(kParagraphProperty)) return;
  const QTextBlockFormat wanted = Fitted(ParagraphOf(format), cursor->block());
  if (wanted.lineHeight() != format.lineHeight()) cursor->setBlockFormat(wanted);
}

double LetterFormats::LetterSpacing(const QTextCharFormat& format) {
  // Qt sets raised letters in a size of their own.
  if (format.verticalAlignment() != QTextCharFormat::AlignNormal) return 100;
  const CharFormat text = CharOf(format);
  return fits_.Of(Family(text.font), text).letter_spacing;
}

void LetterFormats::SetZoom(double zoom) {
  zoom_ = zoom;
  fits_.SetResolution(static_cast<int>(std::lround(ScreenDpi() * zoom)));
}

CharFormat LetterFormats::CharOf(const QTextCharFormat& format) {
  if (format.hasProperty(kCharProperty)) return format.property(kCharProperty).value<CharFormat>();
  CharFormat result;
  const QStringList families = format.fontFamilies().toStringList();
  result.font = families.isEmpty() ? head_.default_font : FontNumber(families.first());
  double points = format.fontPointSize();
  if (points <= 0 && format.hasProperty(QTextFormat::FontPixelSize))
    points = format.intProperty(QTextFormat::FontPixelSize) * 72 / ScreenDpi();
  if (format.hasProperty(QTextFormat::FontSizeAdjustment)) {
    // HTML's headings have sizes one to seven; three is that of body text.
    constexpr double kScale[] = {0.7, 0.8, 1, 1.2, 1.5, 2, 2.4};
    const int size = format.intProperty(QTextFormat::FontSizeAdjustment) + 2;
    points = (points > 0 ? points : result.half_points / 2.0) * kScale[std::clamp(size, 0, 6)];
  }
  if (points > 0) result.half_points = static_cast<int>(std::lround(std::min(points, 1638.0) * 2));
  result.bold = format.fontWeight() >= QFont::DemiBold;
  result.italic = format.fontItalic();
  result.strike = format.fontStrikeOut();
  result.underline = UnderlineOf(format.underlineStyle());
  if (result.underline == Underline::kNone && format.fontUnderline())
    result.underline = Underline::kSingle;
  result.all_caps = format.fontCapitalization() == QFont::AllUppercase;
  result.small_caps = format.fontCapitalization() == QFont::SmallCaps;
  if (format.verticalAlignment() == QTextCharFormat::AlignSuperScript)
    result.script = richtext::Script::kSuper;
  if (format.verticalAlignment() == QTextCharFormat::AlignSubScript)
    result.script = richtext::Script::kSub;
  // Black in text from elsewhere is how other programs export the automatic colour.
  if (format.foreground().style() == Qt::SolidPattern && format.foreground().color() != Qt::black)
    result.colour = ColourNumber(format.foreground().color());
  if (format.background().style() == Qt::SolidPattern)
    result.highlight = ColourNumber(format.background().color());
  return result;
}

ParagraphFormat LetterFormats::ParagraphOf(const QTextBlockFormat& format) {
  if (format.hasProperty(kParagraphProperty))
    return format.property(kParagraphProperty).value<ParagraphFormat>();
  const auto twips = [](double pixels) {
    return static_cast<int>(std::lround(std::clamp(TwipsOfPixels(pixels), -30000.0, 30000.0)));
  };
  ParagraphFormat result;
  const Qt::Alignment alignment = format.alignment();
  if (alignment & Qt::AlignHCenter) result.alignment = Alignment::kCentre;
  if (alignment & Qt::AlignRight) result.alignment = Alignment::kRight;
  if (alignment & Qt::AlignJustify) result.alignment = Alignment::kJustified;
  result.left_indent = twips(format.leftMargin() + format.indent() * 40);
  result.right_indent = twips(format.rightMargin());
  result.first_indent = twips(format.textIndent());
  result.space_before = twips(format.topMargin());
  result.space_after = twips(format.bottomMargin());
  if (format.background().style() == Qt::SolidPattern)
    result.shading = ColourNumber(format.background().color());
  return result;
}

int LetterFormats::FontNumber(const QString& family) {
  for (std::size_t i = 0; i < head_.fonts.size(); ++i) {
    if (QString::fromStdString(head_.fonts[i].name).compare(family, Qt::CaseInsensitive) == 0)
      return static_cast<int>(i);
  }
  richtext::Font font;
  font.number = static_cast<int>(head_.fonts.size());
  font.name = family.toStdString();
  head_.fonts.push_back(std::move(font));
  return static_cast<int>(head_.fonts.size()) - 1;
}

int LetterFormats::ColourNumber(const QColor& colour) {
  if (!colour.isValid() || colour.alpha() == 0) return 0;
  const richtext::Colour wanted{.automatic = false,
                                .red = static_cast<std::uint8_t>(colour.red()),
                                .green = static_cast<std::uint8_t>(colour.green()),
                                .blue = static_cast<std::uint8_t>(colour.blue())};
  const auto found = std::find(head_.colours.begin(), head_.colours.end(), wanted);
  if (found != head_.colours.end()) return static_cast<int>(found - head_.colours.begin());
  head_.colours.push_back(wanted);
  return static_cast<int>(head_.colours.size()) - 1;
}

QString LetterFormats::FontName(int font) const {
  if (font < 0 || font >= static_cast<int>(head_.fonts.size())) return {};
  return QString::fromStdString(head_.fonts[static_cast<std::size_t>(font)].name);
}

QColor LetterFormats::ColourAt(int position) const {
  if (position <= 0 || position >= static_cast<int>(head_.colours.size())) return {};
  const richtext::Colour& colour = head_.colours[static_cast<std::size_t>(position)];
  return colour.automatic ? QColor() : QColor(colour.red, colour.green, colour.blue);
}

void LetterFormats::Adopt(richtext::Document* document) {
  richtext::MoveToTables(document, &head_.fonts, &head_.colours);
}

}  // namespace tenora
