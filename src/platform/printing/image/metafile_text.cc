#include "platform/printing/image/metafile_text.h"

#include <QFontMetricsF>
#include <QStringDecoder>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "platform/printing/symbol_fonts.h"

namespace tenora::printing {
namespace {

constexpr int kPixelSize = 100;        // texts are set in this size, then scaled
constexpr double kDefaultHeight = 16;  // logical units, of a font without a height
constexpr double kNoticed = 0.04;      // of the font's size: a shift that one would see
constexpr unsigned kAlignHorizontally = 6, kAlignRight = 2, kAlignCentre = 6;
constexpr unsigned kAlignVertically = 24, kAlignBottom = 8, kAlignBaseline = 24;
constexpr int kSymbolCharset = 2, kSemibold = 550;

const char* EncodingOf(int charset) {
  switch (charset) {
    case 77:
      return "macintosh";
    case 128:
      return "Shift_JIS";
    case 129:
      return "windows-949";
    case 134:
      return "GBK";
    case 136:
      return "Big5";
    case 161:
      return "windows-1253";
    case 162:
      return "windows-1254";
    case 163:
      return "windows-1258";
    case 177:
      return "windows-1255";
    case 178:
      return "windows-1256";
    case 186:
      return "windows-1257";
    case 204:
      return "windows-1251";
    case 222:
      return "windows-874";
    case 238:
      return "windows-1250";
    default:
      return "windows-1252";
  }
}

const char* FamilyClass(int pitch_and_family) {
  switch (pitch_and_family & 0xF0) {
    case 0x10:
      return "roman";
    case 0x30:
      return "modern";
    default:
      return "swiss";
  }
}

QFont FontOf(const GdiFont& font, const QString& family) {
  QFont result(family);
  result.setPixelSize(kPixelSize);
  result.setBold(font.weight >= kSemibold);
  result.setItalic(font.italic);
  result.setUnderline(font.underline);
  result.setStrikeOut(font.strike_out);
  result.setKerning(false);
  result.setHintingPreference(QFont::PreferNoHinting);
  return result;
}

// Logical units for a pixel of the font, across and down.
QSizeF ScaleOf(const GdiFont& font, const QFontMetricsF& metrics) {
  double height = font.height == 0 ? kDefaultHeight : font.height;
  const double scale = height < 0 ? -height / kPixelSize
                                  : height / std::max(metrics.ascent() + metrics.descent(), 1.0);
  double across = scale;
  const double average = metrics.averageCharWidth() * scale;
  if (font.width != 0 && average > 0) {
    const double stretch = std::clamp(std::abs(font.width) / average, 0.1, 10.0);
    if (std::abs(stretch - 1) > 0.1) across *= stretch;
  }
  return {across, scale};
}

// The linear part of the coordinates' mapping, without a mirroring.
QTransform Directions(const QTransform& to_device, bool upright) {
  QTransform linear(to_device.m11(), to_device.m12(), to_device.m21(), to_device.m22(), 0, 0);
  if (!upright || linear.determinant() >= 0) return linear;
  const bool mirrored_across = linear.m11() < 0 && linear.m12() == 0;
  return QTransform::fromScale(mirrored_across ? -1 : 1, mirrored_across ? 1 : -1) * linear;
}

bool IsSimple(const QString& text) {
  return std::ranges::all_of(text, [](QChar c) {
    return c.category() != QChar::Mark_NonSpacing && c.category() != QChar::Mark_Enclosing &&
           c.direction() != QChar::DirR && c.direction() != QChar::DirAL &&
           c.direction() != QChar::DirAN;
  });
}

// In pixels of the font.
std::vector<double> NaturalAdvances(const QString& text, const QFontMetricsF& metrics) {
  std::vector<double> advances;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i].isLowSurrogate() && i > 0) {
      advances.push_back(0);
    } else {
      const qsizetype length = text[i].isHighSurrogate() ? 2 : 1;
      advances.push_back(metrics.horizontalAdvance(text.mid(i, length)));
    }
  }
  return advances;
}

double Sum(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0);
}

bool IsNatural(const std::vector<double>& advances, const std::vector<double>& natural) {
  double shift = 0;
  for (std::size_t i = 0; i < advances.size(); ++i) {
    shift += advances[i] - natural[i];
    if (std::abs(shift) > kNoticed * kPixelSize) return false;
  }
  return true;
}

}  // namespace

QString TextOf(std::string_view bytes, const GdiFont& font) {
  const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
  if (font.charset == kSymbolCharset) return QString::fromLatin1(view);
  QStringDecoder decoder(EncodingOf(font.charset));
  return decoder.isValid() ? QString(decoder(view)) : QString::fromLatin1(view);
}

LaidText MetafileTexts::Lay(const MetafileText& text, const GdiFont& font,
                            const TextSetting& setting, const QTransform& to_device) {
  LaidText laid;
  laid.end = text.at;
  const QFont drawn_font = FontOf(font, FamilyFor(font));
  const QFontMetricsF metrics(drawn_font);
  const QSizeF scale = ScaleOf(font, metrics);
  const SymbolFont symbols = SymbolFontOf(font.family.toStdString());
  const QString words = WithUnicodeSymbols(text.text, symbols);
  if (words.isEmpty() || scale.isEmpty()) return laid;

  const bool simple = IsSimple(words);
  const std::vector<double> natural = NaturalAdvances(words, metrics);
  const double natural_width = simple ? Sum(natural) : metrics.horizontalAdvance(words);
  std::vector<double> advances = natural;
  const bool given = text.advances.size() == static_cast<std::size_t>(words.size());
  for (std::size_t i = 0; i < advances.size(); ++i) {
    if (given) {
      advances[i] = text.advances[i] / scale.width();
    } else {
      const bool space = words[static_cast<qsizetype>(i)] == u' ';
      advances[i] += (setting.letter_spacing + (space ? setting.word_spacing : 0)) / scale.width();
    }
  }
  const bool spaced = given || setting.letter_spacing != 0 || setting.word_spacing != 0;
  const double width = spaced ? Sum(advances) : natural_width;

  double across = 0, down = metrics.ascent();
  const unsigned horizontally = setting.align & kAlignHorizontally;
  if (horizontally == kAlignCentre) across = -width / 2;
  if (horizontally == kAlignRight) across = -width;
  const unsigned vertically = setting.align & kAlignVertically;
  if (vertically == kAlignBaseline) down = 0;
  if (vertically == kAlignBottom) down = -metrics.descent();

  // From pixels of the font, with the reference point at (0, 0), to the device.
  QTransform place = QTransform::fromScale(scale.width(), scale.height());
  place *= QTransform().rotate(-font.escapement);
  place *= Directions(to_device, text.upright);
  const QPointF reference = to_device.map(text.at);
  place *= QTransform::fromTranslate(reference.x(), reference.y());
  place = QTransform::fromTranslate(across, down) * place;

  laid.ground = place.map(
      QPolygonF(QRectF(0, -metrics.ascent(), width, metrics.ascent() + metrics.descent())));
  bool invertible = false;
  const QTransform back = to_device.inverted(&invertible);
  if (invertible && horizontally != kAlignCentre) {
    laid.end = back.map(place.map(QPointF(horizontally == kAlignRight ? 0 : width, -down)));
  }

  const auto add = [&](const QString& piece, const QTransform& where) {
    laid.pieces.push_back({piece, drawn_font, setting.colour, where});
  };
  if (!simple) {
    const double stretch = spaced && natural_width > 0 && width > 0 ? width / natural_width : 1;
    add(words, QTransform::fromScale(stretch, 1) * place);
  } else if (IsNatural(advances, natural)) {
    add(words, place);
  } else {
    double x = 0;
    for (qsizetype i = 0; i < words.size(); ++i) {
      const qsizetype length = words[i].isHighSurrogate() ? 2 : 1;
      const QString piece = words.mid(i, length);
      if (!piece.trimmed().isEmpty() && !words[i].isLowSurrogate()) {
        add(piece, QTransform::fromTranslate(x, 0) * place);
      }
      x += advances[static_cast<std::size_t>(i)];
    }
  }
  return laid;
}

QString MetafileTexts::FamilyFor(const GdiFont& font) {
  richtext::Font wanted;
  wanted.name = font.family.toStdString();
  wanted.family = FamilyClass(font.pitch_and_family);
  return families_.FamilyFor(wanted);
}

}  // namespace tenora::printing
