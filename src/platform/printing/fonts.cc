#include "platform/printing/fonts.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <algorithm>
#include <string_view>

#include "platform/printing/symbol_fonts.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kMostFamilies = 1000;  // kept; no letter has as many
constexpr int kLargestHalfPoints = 3276;
constexpr double kSmallCapitals = 0.8;  // of the font size

struct Substitute {
  std::string_view name;  // as documents write it; any longer name may follow
  const char* family;
};

// Fonts of equal widths first, so that lines break where they did for the author.
constexpr Substitute kSubstitutes[] = {
    {"Arial Narrow", "Liberation Sans Narrow"},
    {"Arial", "Liberation Sans"},
    {"Helvetica", "Liberation Sans"},
    {"MS Sans Serif", "Liberation Sans"},
    {"Microsoft Sans Serif", "Liberation Sans"},
    {"Segoe UI", "Liberation Sans"},
    {"Times", "Liberation Serif"},
    {"MS Serif", "Liberation Serif"},
    {"Courier", "Liberation Mono"},
    {"Consolas", "Liberation Mono"},
    {"Lucida Console", "Liberation Mono"},
    {"Andale Mono", "Liberation Mono"},
    {"Menlo", "Liberation Mono"},
    {"Monaco", "Liberation Mono"},
    {"Calibri", "Carlito"},
    {"Cambria", "Caladea"},
    {"Verdana", "DejaVu Sans"},
    {"Tahoma", "DejaVu Sans Condensed"},
    // Where those are not installed; the class that a document gives them may be wrong.
    {"Calibri", "Liberation Sans"},
    {"Verdana", "Liberation Sans"},
    {"Tahoma", "Liberation Sans"},
    {"Cambria", "Liberation Serif"},
    {"Book Antiqua", "Liberation Serif"},
    {"Bookman", "Liberation Serif"},
    {"Century Schoolbook", "Liberation Serif"},
    {"Constantia", "Liberation Serif"},
    {"Garamond", "Liberation Serif"},
    {"Georgia", "Liberation Serif"},
    {"Palatino", "Liberation Serif"},
    {"Symbol", "DejaVu Sans"},
    {"Wingdings", "DejaVu Sans"},
    {"Webdings", "DejaVu Sans"},
};

const char* FamilyOfClass(std::string_view family_class) {
  if (family_class == "roman") return "Liberation Serif";
  if (family_class == "modern") return "Liberation Mono";
  return "Liberation Sans";
}

}  // namespace

QString InstalledFamily(const richtext::Font& font) {
  const QString own = QString::fromStdString(font.name);
  // The symbol fonts' own encodings are gone by now: their characters are Unicode.
  const bool symbols = SymbolFontOf(font.name) != SymbolFont::kNone;
  if (!symbols && !own.isEmpty() && QFontDatabase::hasFamily(own)) return own;
  for (const Substitute& substitute : kSubstitutes) {
    if (StartsWithNoCase(font.name, substitute.name) &&
        QFontDatabase::hasFamily(QLatin1String(substitute.family))) {
      return QLatin1String(substitute.family);
    }
  }
  return QLatin1String(FamilyOfClass(font.family));
}

bool IsKerned(const richtext::CharFormat& format) {
  return format.kerned_from > 0 && format.half_points >= format.kerned_from;
}

const QString& InstalledFamilies::FamilyFor(const richtext::Font& font) {
  const std::pair key(font.name, font.family);
  const auto found = families_.find(key);
  if (found != families_.end()) return found->second;
  if (families_.size() >= kMostFamilies) families_.clear();
  return families_.emplace(key, InstalledFamily(font)).first->second;
}

const FontUse& Fonts::Use(const richtext::CharFormat& format, bool shaped, bool small) {
  const Key key{format.font,
                format.half_points,
                format.colour,
                format.bold,
                format.italic,
                IsKerned(format),
                shaped,
                small,
                static_cast<int>(format.script),
                format.raise_half_points};
  const auto found = uses_.find(key);
  if (found != uses_.end()) return found->second;
  return uses_.emplace(key, Make(format, shaped, small)).first->second;
}

std::string_view Fonts::NameOf(int font) const {
  if (font < 0 || font >= static_cast<int>(document_.fonts.size())) return {};
  return document_.fonts[static_cast<std::size_t>(font)].name;
}

QColor Fonts::Colour(int position) const {
  if (position <= 0 || position >= static_cast<int>(document_.colours.size())) return Qt::black;
  const richtext::Colour& colour = document_.colours[static_cast<std::size_t>(position)];
  return colour.automatic ? QColor(Qt::black) : QColor(colour.red, colour.green, colour.blue);
}

FontUse Fonts::Make(const richtext::CharFormat& format, bool shaped, bool small) {
  FontUse use;
  const bool kerned = IsKerned(format);
  use.size = std::clamp(format.half_points, 2, kLargestHalfPoints) * kTwipsPerHalfPoint;
  if (small) use.size *= kSmallCapitals;
  use.font.setFamily(Family(format.font));
  use.font.setPixelSize(static_cast<int>(use.size));
  use.font.setBold(format.bold);
  use.font.setItalic(format.italic);
  use.font.setKerning(kerned);
  use.font.setHintingPreference(QFont::PreferNoHinting);
  if (!shaped && !kerned) use.font.setStyleStrategy(QFont::PreferNoShaping);
  use.colour = Colour(format.colour);
  use.format.setFont(use.font);
  use.format.setForeground(use.colour);
  if (format.script == richtext::Script::kSuper) {
    use.format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
  } else if (format.script == richtext::Script::kSub) {
    use.format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
  }
  const QFontMetricsF metrics(use.font);
  use.ascent = metrics.ascent();
  use.descent = metrics.descent();
  use.leading = std::max(0.0, metrics.leading());
  if (format.raise_half_points != 0) {
    use.format.setBaselineOffset(100.0 * format.raise_half_points * kTwipsPerHalfPoint /
                                 metrics.height());
  }
  use.plain = format.script == richtext::Script::kNormal && format.raise_half_points == 0;
  return use;
}

QString Fonts::Family(int font) {
  const int count = static_cast<int>(document_.fonts.size());
  if (count == 0) return QStringLiteral("Liberation Serif");
  const int known = font >= 0 && font < count ? font : 0;
  return installed_.FamilyFor(document_.fonts[static_cast<std::size_t>(known)]);
}

}  // namespace tenora::printing
