// The installed fonts that a document's fonts are drawn with.
#pragma once

#include <QFont>
#include <QTextCharFormat>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "platform/richtext/document.h"

namespace tenora::printing {

inline constexpr int kTwipsPerHalfPoint = 10;

// The installed family for a document's font: the font itself, else a substitute of equal widths.
QString InstalledFamily(const richtext::Font& font);

// Whether the format's font is one whose pairs of letters are set closer where they fit.
bool IsKerned(const richtext::CharFormat& format);

// Everything about a character format that determines glyphs and metrics. Lengths are twips.
struct FontUse {
  QFont font;
  QTextCharFormat format;  // for text of several formats
  QColor colour;
  double size = 0;
  double ascent = 0, descent = 0, leading = 0;
  bool plain = true;  // `font` and `colour` alone draw it: neither raised nor lowered
};

// Caches InstalledFamily: a look-up costs more than laying out a page.
class InstalledFamilies {
 public:
  const QString& FamilyFor(const richtext::Font& font);

 private:
  std::map<std::pair<std::string, std::string>, QString> families_;  // by name and class
};

// One of these per document and thread: it remembers what it looked up.
class Fonts {
 public:
  Fonts(const richtext::Document& document, InstalledFamilies& families)
      : document_(document), installed_(families) {}
  Fonts(const Fonts&) = delete;
  Fonts& operator=(const Fonts&) = delete;

  // `shaped` text has marks that must be placed on their letters; other text is laid out like the
  // classic control does it, without ligatures, and kerned only where the letter says so. The
  // result lives as long as this. `small` is the size of small capitals.
  const FontUse& Use(const richtext::CharFormat& format, bool shaped = false, bool small = false);
  // For a font that the document's table need not have.
  const QString& Installed(const richtext::Font& font) { return installed_.FamilyFor(font); }
  // As the document writes it; empty for a number it does not define.
  std::string_view NameOf(int font) const;
  // Black for automatic.
  QColor Colour(int position) const;

 private:
  using Key = std::tuple<int, int, int, bool, bool, bool, bool, bool, int, int>;

  FontUse Make(const richtext::CharFormat& format, bool shaped, bool small);
  QString Family(int font);

  const richtext::Document& document_;
  InstalledFamilies& installed_;
  std::map<Key, FontUse> uses_;
};

}  // namespace tenora::printing
