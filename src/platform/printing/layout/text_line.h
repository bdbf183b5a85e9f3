// One line of a laid-out paragraph. Lengths are twips, x counts from the left edge of the text
// area.
#pragma once

#include <QTextLayout>
#include <QTextLine>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/printing/fonts.h"
#include "platform/printing/layout/rule.h"
#include "platform/printing/layout/strip.h"
#include "platform/printing/pictures.h"

namespace tenora::printing {

// A part of a text in one character format, and its position in the document.
struct Fragment {
  int start = 0, length = 0;  // in the layout's text
  int position = 0;           // in the document
  bool small = false;         // small capitals
  bool one_position = false;  // the whole fragment stands for one character of the document
  const richtext::CharFormat* format = nullptr;
};

// A stretch of text between tabs, pictures and breaks.
struct ShapedText {
  QTextLayout layout;
  std::vector<Fragment> fragments;
  QColor colour;                                   // of a text in one plain format
  std::optional<richtext::CharFormat> own_format;  // of a list's mark

  int PositionAt(int offset) const;
  // The fragments that have characters in [from, to).
  std::span<const Fragment> FragmentsIn(int from, int to) const;
};

struct PlacedText {
  std::shared_ptr<ShapedText> text;
  QTextLine line;
};

struct PlacedTab {
  double width = 0;
  std::string leader;
  const richtext::CharFormat* format = nullptr;
};

struct Piece {
  double x = 0;
  std::variant<PlacedText, PlacedTab, PlacedPicture> content;
};

// What is drawn around the lines of a paragraph.
struct Frame {
  double left = 0, right = 0;
  QColor shading;  // invalid for none
  struct Edge {
    Rule rule;
    double space = 0;  // to the text

    double Room() const { return rule.width > 0 ? rule.Thickness() + space : 0; }
  };
  // Those at the sides are outside of `left` and `right`, the others have room in the lines.
  Edge left_edge, right_edge, top_edge, bottom_edge;
  Edge between;  // paragraphs that share the frame
};

class TextLine : public Strip {
 public:
  explicit TextLine(std::shared_ptr<Fonts> fonts) : fonts_(std::move(fonts)) {}
  void Draw(QPainter& painter, QPointF corner) const override;
  void SetEnds(bool begins_column, bool ends_column) override;

  double baseline = 0;  // from the strip's top
  std::vector<Piece> pieces;
  std::vector<double> bars;  // x of bar tabs
  std::shared_ptr<const Frame> frame;
  double frame_below = 0;  // how far the frame extends below, to a neighbour that shares it
  bool closed_above = false, closed_below = false;  // the frame begins or ends with the line
  bool parted_above = false;                        // with the frame's line between paragraphs

 private:
  void DrawFrame(QPainter& painter, QPointF corner) const;
  void DrawText(QPainter& painter, QPointF origin, const PlacedText& text) const;
  void DrawTab(QPainter& painter, QPointF origin, const PlacedTab& tab) const;
  void Highlight(QPainter& painter, const QRectF& area, const richtext::CharFormat& format) const;
  void Decorate(QPainter& painter, QPointF origin, double width,
                const richtext::CharFormat& format) const;

  std::shared_ptr<Fonts> fonts_;
  // The frame goes on in the column before or the next one, and is closed there and here.
  bool cut_above_ = false, cut_below_ = false;
};

}  // namespace tenora::printing
