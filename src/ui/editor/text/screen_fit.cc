#include "ui/editor/text/screen_fit.h"

#include <QFont>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace tenora {
namespace {

constexpr int kTwipsPerHalfPoint = 10;
constexpr double kTwipsPerInch = 1440;
constexpr std::size_t kMostFits = 1000;  // kept; no letter has as many formats

// Letters about as often as in letters.
const QString kSample = QStringLiteral(
    "Dear Mr Quigley, the rent of 25 Kauri Street is due on the 1st of each month. We have looked "
    "at "
    "your account: $1,234.56 is still owing, and just 14 days are left before a notice is given.");

double LineHeight(const QFontMetricsF& font) {
  return font.ascent() + font.descent() + std::max(font.leading(), 0.0);
}

ScreenFit MakeFit(QFont font, int half_points, int dpi) {
  font.setKerning(false);
  font.setHintingPreference(QFont::PreferNoHinting);
  // The layout on paper is in twips, so its font is as many pixels.
  font.setPixelSize(half_points * kTwipsPerHalfPoint);
  const QFontMetricsF paper(font);
  const double pixels_per_twip = dpi / kTwipsPerInch;
  const double width = paper.horizontalAdvance(kSample) * pixels_per_twip;
  font.setPixelSize(std::max(
      1, static_cast<int>(std::lround(half_points * kTwipsPerHalfPoint * pixels_per_twip))));
  const QFontMetricsF screen(font);
  ScreenFit fit;
  fit.line_pitch = LineHeight(paper) * pixels_per_twip / std::ceil(LineHeight(screen));
  // Twice, since Qt cuts what it adds to a letter to a 64th of a pixel.
  for (int i = 0; i < 2; ++i) {
    font.setLetterSpacing(QFont::PercentageSpacing, fit.letter_spacing);
    const double shown = QFontMetricsF(font).horizontalAdvance(kSample);
    if (shown > 0) fit.letter_spacing = std::clamp(fit.letter_spacing * width / shown, 10.0, 300.0);
  }
  return fit;
}

}  // namespace

void ScreenFits::SetResolution(int dpi) {
  if (dpi == dpi_) return;
  dpi_ = dpi;
  fits_.clear();
}

const ScreenFit& ScreenFits::Of(const QString& family, const richtext::CharFormat& format) {
  const int half_points = std::clamp(format.half_points, 2, 3276);
  const Key key{family, half_points, format.bold, format.italic};
  const auto found = fits_.find(key);
  if (found != fits_.end()) return found->second;
  if (fits_.size() >= kMostFits) fits_.clear();
  QFont font(family);
  font.setBold(format.bold);
  font.setItalic(format.italic);
  return fits_.emplace(key, MakeFit(font, half_points, dpi_)).first->second;
}

}  // namespace tenora
