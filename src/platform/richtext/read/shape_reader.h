// The shapes of a drawing while it is read: \shp, groups of them (\shpgrp), and the drawings of
// older word processors (\do).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/read/old_drawing_reader.h"
#include "platform/richtext/read/shape_outline.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class ShapeReader {
 public:
  // Whether this is the first word of a drawing's group.
  static bool IsShape(std::string_view word);

  // A group that begins so has opened, at first or inside a group of shapes; it has closed.
  void Open(std::string_view word);
  void Close();
  // What is inside it. Words that say nothing about shapes change nothing.
  void Word(const Token& word);
  void Property(std::string_view name, std::string_view value);
  void AddPicture(std::shared_ptr<const Picture> picture);
  void AddBlocks(std::vector<Block> blocks);

  // The size of the drawing, twips; 0 while it is not known.
  int width() const { return box_.right - box_.left; }
  int height() const { return box_.bottom - box_.top; }
  bool single() const { return !grouped_; }
  // After the drawing has closed.
  const ShapeBox& box() const { return box_; }
  std::vector<std::shared_ptr<const Figure>> TakeFigures();

 private:
  struct Area {
    double left = 0, top = 0, right = 0, bottom = 0;
  };
  // With its width as its height, about the same middle.
  static Area Turned(const Area& area);
  struct Part {
    Area area;
    Figure figure;
    bool flip_x = false, flip_y = false;
  };
  struct Shape {
    bool group = false;
    int type = 0;                // as word processors number them
    Area in_group;               // in the units of the group around
    std::optional<Area> inside;  // the units of this group
    std::optional<bool> filled, lined;
    bool fits_text = false, hidden = false, flip_x = false, flip_y = false;
    double rotation = 0;  // degrees clockwise
    Adjustments adjustments;
    std::string points, segments;  // of a shape drawn by hand
    Area form{0, 0, 21600, 21600};
    Colour fill{.automatic = false, .red = 255, .green = 255, .blue = 255};
    Colour other_fill{.automatic = false, .red = 255, .green = 255, .blue = 255};
    int fill_type = 0, fill_focus = 0;
    double fill_angle = 0, opacity = 1;
    Lettering lettering;
    bool arrow_at_start = false, arrow_at_end = false;
    Colour line{};
    int line_width = 15;
    Padding inset{72, 144, 72, 144};
    std::shared_ptr<const Picture> picture;
    std::vector<Block> blocks;
    Cell::Direction direction = Cell::Direction::kAcross;
    std::vector<Part> parts;
  };

  static Figure FigureOf(Shape* shape);
  static void SetForm(Shape* shape, Figure* figure);
  static void SetFill(const Shape& shape, Figure* figure);
  static void JoinGroup(Shape* group, const Area& whole);
  void AddFigure(Part part);
  static void SetForm(Shape* shape, std::string_view name, std::string_view value);
  static void SetStyle(Shape* shape, std::string_view name, int value);
  void SetPlace(Shape* shape, std::string_view name, int value);

  ShapeBox box_;
  bool grouped_ = false;
  std::vector<Shape> open_;
  int ignored_ = 0;  // shapes nested too deep
  std::optional<OldDrawingReader> old_;
  std::vector<std::shared_ptr<const Figure>> figures_;
};

}  // namespace tenora::richtext
