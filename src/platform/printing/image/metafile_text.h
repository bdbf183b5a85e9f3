// How a metafile's text is set: alignment, rotation, the characters' own advances.
#pragma once

#include <QPolygonF>
#include <QTransform>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/printing/fonts.h"
#include "platform/printing/image/drawing.h"
#include "platform/printing/image/gdi_objects.h"

namespace tenora::printing {

// A line of text; lengths in logical units.
struct MetafileText {
  QPointF at;
  QString text;
  std::vector<double> advances;  // of each character; empty: the font's
  bool upright = true;           // whatever the coordinates' directions
};

struct TextSetting {
  unsigned align = 0;
  double letter_spacing = 0;
  double word_spacing = 0;
  QColor colour = Qt::black;
};

struct LaidText {
  std::vector<DrawnText> pieces;  // in device units
  QPolygonF ground;               // the text's rectangle, in device units
  QPointF end;                    // where the next text begins, in logical units
};

inline constexpr unsigned kAlignUpdatePosition = 1;

class MetafileTexts {
 public:
  LaidText Lay(const MetafileText& text, const GdiFont& font, const TextSetting& setting,
               const QTransform& to_device);

 private:
  QString FamilyFor(const GdiFont& font);

  InstalledFamilies families_;
};

// The text of bytes in the font's character set.
QString TextOf(std::string_view bytes, const GdiFont& font);

}  // namespace tenora::printing
