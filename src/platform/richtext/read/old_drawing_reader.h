// A drawing as word processors wrote it before they had shapes (\do): primitives one after another.
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class OldDrawingReader {
 public:
  // A word of the drawing; others change nothing.
  void Word(const Token& word);
  // The text of the text box begun last.
  void AddBlocks(std::vector<Block> blocks);

  // Both end the drawing, the box first.
  ShapeBox box();
  std::vector<std::shared_ptr<const Figure>> TakeFigures();

 private:
  struct Primitive {
    bool drawn = false;  // else it is a group, or of a kind that is not drawn
    bool group = false;
    int x = 0, y = 0, width = 0, height = 0;
    std::vector<std::pair<int, int>> points;  // of a line or a polygon
    bool closed = false, arc = false;
    bool flip_x = false, flip_y = false;  // of an arc
    bool hollow = false, clear = false;   // without line, without fill
    Figure figure;
  };

  void Begin(std::string_view kind);
  void End();
  void StyleWord(const Token& word);
  static Outline OutlineOf(const Primitive& primitive);

  ShapeBox box_{.wrap = ShapeBox::Wrap::kNone};
  bool in_front_ = false;  // a height above the text is given
  Primitive now_;
  std::vector<std::pair<int, int>> corners_;  // of the groups around
  std::vector<Figure> figures_;
};

}  // namespace tenora::richtext
