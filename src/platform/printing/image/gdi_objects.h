// The drawing tools of a metafile: what its records create, select by number and delete.
#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <Qt>
#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace tenora::printing {

struct GdiPen {
  Qt::PenStyle style = Qt::SolidLine;
  double width = 0;  // logical units; 0 is the thinnest line
  QColor colour = Qt::black;
  Qt::PenCapStyle cap = Qt::RoundCap;
  Qt::PenJoinStyle join = Qt::RoundJoin;
  QList<qreal> dashes;  // of Qt::CustomDashLine, in logical units
};

struct GdiBrush {
  enum class Kind { kNone, kSolid, kHatch, kPattern };
  Kind kind = Kind::kSolid;
  QColor colour = Qt::white;
  int hatch = 0;             // 0 to 5: ― | \ / + ×
  QImage pattern;            // repeated
  bool two_colours = false;  // the pattern's black and white stand for the text's and its ground's
};

struct GdiFont {
  QString family = QStringLiteral("Arial");
  double height = 0;      // logical units: of a line where positive, of the letters where negative
  double width = 0;       // of an average letter; 0 for the font's own
  double escapement = 0;  // degrees, counter-clockwise
  int weight = 400;
  bool italic = false, underline = false, strike_out = false;
  int charset = 0;
  int pitch_and_family = 0;
};

struct GdiRegion {
  std::vector<QRectF> rectangles;
};

// A palette or a colour space, which takes a number.
struct GdiOther {};

using GdiObject = std::variant<std::monostate, GdiPen, GdiBrush, GdiFont, GdiRegion, GdiOther>;

// From the numbers that both kinds of metafile use.
GdiPen PenFrom(unsigned style, double width, const QColor& colour);
GdiBrush BrushFrom(unsigned style, const QColor& colour, unsigned hatch);

class GdiObjects {
 public:
  // At the lowest free number, as WMF files count.
  void Add(GdiObject object) {
    std::size_t number = 0;
    while (number < objects_.size() && objects_[number].index() != 0) ++number;
    Set(number, std::move(object));
  }
  void Set(std::size_t number, GdiObject object) {
    if (number >= kMost) return;
    if (number >= objects_.size()) objects_.resize(number + 1);
    objects_[number] = std::move(object);
  }
  void Delete(std::size_t number) {
    if (number < objects_.size()) objects_[number] = std::monostate();
  }
  // An empty one for a number that is not in use.
  const GdiObject& At(std::size_t number) const {
    static const GdiObject kNone;
    return number < objects_.size() ? objects_[number] : kNone;
  }

 private:
  static constexpr std::size_t kMost = 16384;

  std::vector<GdiObject> objects_;
};

}  // namespace tenora::printing
