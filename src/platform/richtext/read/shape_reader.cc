#include "platform/richtext/read/shape_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

namespace tenora::richtext {
namespace {

constexpr std::size_t kDeepestGroup = 16;
constexpr std::size_t kMostFigures = 1000;
constexpr int kUnitsPerTwip = 635;  // lengths of properties are in 360,000ths of a centimetre
constexpr int kWidestLine = 1440;   // twips

// The kinds of shapes that are drawn with their outline; a text in another has a rectangle around.
namespace shape_type {
constexpr int kRectangle = 1, kRounded = 2, kEllipse = 3, kLine = 20, kConnector = 32,
              kPicture = 75, kFirstTextArt = 136, kLastTextArt = 175, kTextBox = 202;
}

int Number(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return static_cast<int>(std::clamp<std::int64_t>(number, INT32_MIN, INT32_MAX));
}

int Twips(int units, int most) { return std::clamp(units / kUnitsPerTwip, 0, most); }

// Colours that are numbers of a scheme leave the usual colour.
void SetColour(int value, Colour* colour) {
  const auto bits = static_cast<std::uint32_t>(value);
  if (bits > 0xffffff) return;
  *colour = {.automatic = false,
             .red = static_cast<std::uint8_t>(bits),
             .green = static_cast<std::uint8_t>(bits >> 8),
             .blue = static_cast<std::uint8_t>(bits >> 16)};
}

int OnPage(double twips) {
  return static_cast<int>(std::lround(std::clamp<double>(twips, -kLargestPage, kLargestPage)));
}

}  // namespace

bool ShapeReader::IsShape(std::string_view word) {
  return word == "shp" || word == "shpgrp" || word == "do";
}

void ShapeReader::Open(std::string_view word) {
  if (word == "do" && open_.empty()) old_.emplace();
  if (open_.size() >= kDeepestGroup) {
    ++ignored_;
    return;
  }
  open_.emplace_back().group = word == "shpgrp";
  grouped_ = grouped_ || word == "shpgrp" || word == "do";
}

void ShapeReader::Close() {
  if (ignored_ > 0) {
    --ignored_;
    return;
  }
  if (open_.empty()) return;
  Shape shape = std::move(open_.back());
  open_.pop_back();
  const bool outermost = open_.empty();
  if (outermost && old_) {
    box_ = old_->box();
    figures_ = old_->TakeFigures();
    return;
  }
  const Area whole = outermost ? Area{0, 0, double(width()), double(height())} : shape.in_group;
  if (shape.hidden) return;
  if (shape.group) {
    const Area from = shape.inside.value_or(whole);
    const double wide = from.right - from.left, high = from.bottom - from.top;
    const double scale_x = wide == 0 ? 0 : (whole.right - whole.left) / wide;
    const double scale_y = high == 0 ? 0 : (whole.bottom - whole.top) / high;
    for (Part& part : shape.parts) {
      part.area = {whole.left + (part.area.left - from.left) * scale_x,
                   whole.top + (part.area.top - from.top) * scale_y,
                   whole.left + (part.area.right - from.left) * scale_x,
                   whole.top + (part.area.bottom - from.top) * scale_y};
    }
  } else {
    shape.parts = {{whole, FigureOf(&shape)}};
  }
  for (Part& part : shape.parts) {
    if (!outermost) {
      if (open_.back().parts.size() < kMostFigures) open_.back().parts.push_back(std::move(part));
      continue;
    }
    Figure& figure = part.figure;
    figure.left = OnPage(std::min(part.area.left, part.area.right));
    figure.right = OnPage(std::max(part.area.left, part.area.right));
    figure.top = OnPage(std::min(part.area.top, part.area.bottom));
    figure.bottom = OnPage(std::max(part.area.top, part.area.bottom));
    if (figure.fill || figure.line || figure.picture || !figure.blocks.empty())
      figures_.push_back(std::make_shared<const Figure>(std::move(figure)));
  }
}

Figure ShapeReader::FigureOf(Shape* shape) {
  namespace type = shape_type;
  Figure figure;
  figure.kind = shape->type == type::kRounded   ? Figure::Kind::kRounded
                : shape->type == type::kEllipse ? Figure::Kind::kEllipse
                : shape->type == type::kLine || shape->type == type::kConnector
                    ? Figure::Kind::kLine
                    : Figure::Kind::kRectangle;
  figure.rising = shape->flip_x != shape->flip_y;
  const bool known = figure.kind != Figure::Kind::kRectangle || shape->type == type::kRectangle ||
                     shape->type == type::kTextBox || shape->picture || !shape->blocks.empty();
  const bool usual = shape->type != type::kPicture;
  if (known && shape->filled.value_or(usual) && figure.kind != Figure::Kind::kLine)
    figure.fill = shape->fill;
  if (known && shape->lined.value_or(usual)) figure.line = shape->line;
  figure.line_width = shape->line_width;
  figure.inset = shape->inset;
  figure.fits_text = shape->fits_text;
  figure.picture = std::move(shape->picture);
  figure.blocks = std::move(shape->blocks);
  return figure;
}

void ShapeReader::Word(const Token& word) {
  using From = ShapeBox::From;
  static const std::unordered_map<std::string_view, int ShapeBox::*> kEdges{
      {"shpleft", &ShapeBox::left},
      {"shptop", &ShapeBox::top},
      {"shpright", &ShapeBox::right},
      {"shpbottom", &ShapeBox::bottom}};
  static const std::unordered_map<std::string_view, From> kX{
      {"shpbxpage", From::kPage}, {"shpbxmargin", From::kMargin}, {"shpbxcolumn", From::kText}};
  static const std::unordered_map<std::string_view, From> kY{
      {"shpbypage", From::kPage}, {"shpbymargin", From::kMargin}, {"shpbypara", From::kText}};
  if (old_) return old_->Word(word);
  // The members of a group have their places in properties.
  if (open_.size() != 1 || !word.text.starts_with("shp")) return;
  if (const auto edge = kEdges.find(word.text); edge != kEdges.end()) {
    box_.*edge->second = std::clamp(word.param, -kLargestPage, kLargestPage);
  } else if (const auto x = kX.find(word.text); x != kX.end()) {
    box_.x_from = x->second;
  } else if (const auto y = kY.find(word.text); y != kY.end()) {
    box_.y_from = y->second;
  } else if (word.text == "shpwr") {
    box_.wrap = word.param == 1   ? ShapeBox::Wrap::kAboveAndBelow
                : word.param == 3 ? ShapeBox::Wrap::kNone
                                  : ShapeBox::Wrap::kAround;
  } else if (word.text == "shpfblwtxt") {
    box_.behind = word.param == 1;
  } else if (word.text == "shpz") {
    box_.layer = word.param;
  }
}

void ShapeReader::Property(std::string_view name, std::string_view value) {
  if (open_.empty()) return;
  Shape& shape = open_.back();
  const int number = Number(value);
  SetStyle(&shape, name, number);
  SetPlace(&shape, name, number);
}

void ShapeReader::SetStyle(Shape* shape, std::string_view name, int value) {
  static const std::unordered_map<std::string_view, int Padding::*> kInsets{
      {"dxTextLeft", &Padding::left},
      {"dyTextTop", &Padding::top},
      {"dxTextRight", &Padding::right},
      {"dyTextBottom", &Padding::bottom}};
  if (const auto inset = kInsets.find(name); inset != kInsets.end())
    shape->inset.*inset->second = Twips(value, kLargestPage);
  if (name == "shapeType") {
    shape->type = value;
    // Lettering is not drawn, nor a box in its place.
    if (value >= shape_type::kFirstTextArt && value <= shape_type::kLastTextArt)
      shape->filled = shape->lined = false;
  }
  const bool drawn =
      shape->type < shape_type::kFirstTextArt || shape->type > shape_type::kLastTextArt;
  if (name == "fFilled") shape->filled = drawn && value != 0;
  if (name == "fillOpacity" && value == 0) shape->filled = false;
  if (name == "fLine") shape->lined = drawn && value != 0;
  if (name == "fillColor") SetColour(value, &shape->fill);
  if (name == "lineColor") SetColour(value, &shape->line);
  if (name == "lineWidth") shape->line_width = Twips(value, kWidestLine);
  if (name == "fFitShapeToText") shape->fits_text = value != 0;
  if (name == "fHidden") shape->hidden = value != 0;
  if (name == "fFlipH") shape->flip_x = value != 0;
  if (name == "fFlipV") shape->flip_y = value != 0;
}

void ShapeReader::SetPlace(Shape* shape, std::string_view name, int value) {
  using From = ShapeBox::From;
  using Align = ShapeBox::Align;
  static const std::unordered_map<std::string_view, double Area::*> kInside{
      {"groupLeft", &Area::left},
      {"groupTop", &Area::top},
      {"groupRight", &Area::right},
      {"groupBottom", &Area::bottom}};
  static const std::unordered_map<std::string_view, double Area::*> kInGroup{
      {"relLeft", &Area::left},
      {"relTop", &Area::top},
      {"relRight", &Area::right},
      {"relBottom", &Area::bottom}};
  if (const auto edge = kInside.find(name); edge != kInside.end()) {
    // Not emplace() without a value: clang finds no default constructor of a nested class.
    if (!shape->inside) shape->inside.emplace(Area{});
    (*shape->inside).*edge->second = value;
  } else if (const auto own = kInGroup.find(name); own != kInGroup.end()) {
    shape->in_group.*own->second = value;
  }
  if (open_.size() != 1) return;
  const From from = value == 0 ? From::kMargin : value == 1 ? From::kPage : From::kText;
  const Align align = value == 1   ? Align::kStart
                      : value == 2 ? Align::kCentre
                      : value == 3 ? Align::kEnd
                                   : Align::kAsSet;
  if (name == "posrelh") box_.x_from = from;
  if (name == "posrelv") box_.y_from = from;
  if (name == "posh") box_.x_align = align;
  if (name == "posv") box_.y_align = align;
  if (name == "fBehindDocument") box_.behind = value != 0;
  if (name == "fPseudoInline") box_.in_line = value != 0;
}

void ShapeReader::AddPicture(std::shared_ptr<const Picture> picture) {
  if (!open_.empty() && !old_) open_.back().picture = std::move(picture);
}

void ShapeReader::AddBlocks(std::vector<Block> blocks) {
  if (old_) return old_->AddBlocks(std::move(blocks));
  if (open_.empty()) return;
  std::vector<Block>& all = open_.back().blocks;
  all.insert(all.end(), std::make_move_iterator(blocks.begin()),
             std::make_move_iterator(blocks.end()));
}

std::vector<std::shared_ptr<const Figure>> ShapeReader::TakeFigures() {
  return std::move(figures_);
}

}  // namespace tenora::richtext
