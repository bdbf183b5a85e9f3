#include "platform/richtext/read/shape_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numbers>
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
              kPicture = 75, kTextBox = 202;

bool IsTextArt(int type) { return type >= 136 && type <= 175; }
}  // namespace shape_type

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

double Degrees(int value) { return value / 65536.0; }

// The side of a turned shape that is up is nearer to one of its sides than to its top or bottom.
bool IsNearlyQuarter(double degrees) {
  const double turn = std::fmod(degrees, 180);
  const double part = turn < 0 ? turn + 180 : turn;
  return part >= 45 && part < 135;
}

Outline DiagonalLine() {
  using Kind = Outline::Step::Kind;
  Outline line;
  line.steps = {{Kind::kMove, {0, 0}, {}, {}}, {Kind::kLine, {1, 1}, {}, {}}};
  line.open = true;
  return line;
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
  if (shape.hidden) return;
  Area whole = outermost ? Area{0, 0, double(width()), double(height())} : shape.in_group;
  // Text is not turned, nor the box around it.
  if (!shape.blocks.empty()) shape.rotation = 0;
  // The place of what is turned so far is that of its turned box.
  if (IsNearlyQuarter(shape.rotation)) whole = Turned(whole);
  if (shape.group) {
    JoinGroup(&shape, whole);
  } else {
    shape.parts = {{whole, FigureOf(&shape), shape.flip_x, shape.flip_y}};
  }
  for (Part& part : shape.parts) {
    if (outermost) {
      AddFigure(std::move(part));
    } else if (open_.back().parts.size() < kMostFigures) {
      open_.back().parts.push_back(std::move(part));
    }
  }
}

ShapeReader::Area ShapeReader::Turned(const Area& area) {
  const double x = (area.left + area.right) / 2, y = (area.top + area.bottom) / 2;
  const double half_width = (area.right - area.left) / 2,
               half_height = (area.bottom - area.top) / 2;
  return {x - half_height, y - half_width, x + half_height, y + half_width};
}

// Puts what is in the group into its place, and flips and turns it with the group.
void ShapeReader::JoinGroup(Shape* group, const Area& whole) {
  const Area from = group->inside.value_or(whole);
  const double wide = from.right - from.left, high = from.bottom - from.top;
  const double scale_x = wide == 0 ? 0 : (whole.right - whole.left) / wide;
  const double scale_y = high == 0 ? 0 : (whole.bottom - whole.top) / high;
  const double middle_x = (whole.left + whole.right) / 2, middle_y = (whole.top + whole.bottom) / 2;
  const double angle = group->rotation * std::numbers::pi / 180;
  for (Part& part : group->parts) {
    Area& area = part.area;
    area = {whole.left + (area.left - from.left) * scale_x,
            whole.top + (area.top - from.top) * scale_y,
            whole.left + (area.right - from.left) * scale_x,
            whole.top + (area.bottom - from.top) * scale_y};
    if (group->flip_x)
      area = {2 * middle_x - area.right, area.top, 2 * middle_x - area.left, area.bottom};
    if (group->flip_y)
      area = {area.left, 2 * middle_y - area.bottom, area.right, 2 * middle_y - area.top};
    part.flip_x = part.flip_x != group->flip_x;
    part.flip_y = part.flip_y != group->flip_y;
    if (group->flip_x != group->flip_y) part.figure.rotation = -part.figure.rotation;
    if (angle == 0) continue;
    const double x = (area.left + area.right) / 2 - middle_x;
    const double y = (area.top + area.bottom) / 2 - middle_y;
    const double move_x = x * std::cos(angle) - y * std::sin(angle) - x;
    const double move_y = x * std::sin(angle) + y * std::cos(angle) - y;
    area = {area.left + move_x, area.top + move_y, area.right + move_x, area.bottom + move_y};
    if (part.figure.blocks.empty()) part.figure.rotation += group->rotation;
  }
}

void ShapeReader::AddFigure(Part part) {
  Figure& figure = part.figure;
  figure.left = OnPage(std::min(part.area.left, part.area.right));
  figure.right = OnPage(std::max(part.area.left, part.area.right));
  figure.top = OnPage(std::min(part.area.top, part.area.bottom));
  figure.bottom = OnPage(std::max(part.area.top, part.area.bottom));
  figure.rising = part.flip_x != part.flip_y;
  Flip(&figure.outline, part.flip_x, part.flip_y);
  if (figure.fill || figure.line || figure.picture || !figure.blocks.empty())
    figures_.push_back(std::make_shared<const Figure>(std::move(figure)));
}

Figure ShapeReader::FigureOf(Shape* shape) {
  namespace type = shape_type;
  Figure figure;
  SetForm(shape, &figure);
  const bool text_art = type::IsTextArt(shape->type);
  const bool known = figure.kind != Figure::Kind::kRectangle || shape->type == type::kRectangle ||
                     shape->type == type::kTextBox || shape->picture || !shape->blocks.empty() ||
                     (text_art && !shape->lettering.text.empty());
  const bool usual = shape->type != type::kPicture;
  const bool fills = figure.kind != Figure::Kind::kLine && !figure.outline.open;
  if (known && shape->filled.value_or(usual) && fills) SetFill(*shape, &figure);
  if (known && shape->lined.value_or(usual)) figure.line = shape->line;
  if (text_art) figure.lettering = std::move(shape->lettering);
  figure.rotation = shape->rotation;
  figure.line_width = shape->line_width;
  figure.inset = shape->inset;
  figure.fits_text = shape->fits_text;
  figure.picture = std::move(shape->picture);
  figure.blocks = std::move(shape->blocks);
  figure.direction = shape->direction;
  return figure;
}

void ShapeReader::SetForm(Shape* shape, Figure* figure) {
  namespace type = shape_type;
  using Kind = Figure::Kind;
  const bool arrow = shape->arrow_at_start || shape->arrow_at_end;
  figure->kind = shape->type == type::kRounded                                   ? Kind::kRounded
                 : shape->type == type::kEllipse                                 ? Kind::kEllipse
                 : shape->type == type::kLine || shape->type == type::kConnector ? Kind::kLine
                                                                                 : Kind::kRectangle;
  std::optional<Outline> outline;
  if (figure->kind == Kind::kLine && arrow) {
    outline = DiagonalLine();
  } else if (shape->type == 0 && !shape->points.empty()) {
    const Area& box = shape->form;
    outline = OutlineOf({shape->points, shape->segments, box.left, box.top, box.right, box.bottom});
  } else {
    outline = OutlineOfType(shape->type, shape->adjustments);
  }
  if (!outline) return;
  figure->kind = Kind::kOutline;
  figure->outline = std::move(*outline);
  figure->arrow_at_start = shape->arrow_at_start;
  figure->arrow_at_end = shape->arrow_at_end;
}

// A focus of 100 leads from the colour to the other one, 0 back from that, 50 there and back.
void ShapeReader::SetFill(const Shape& shape, Figure* figure) {
  constexpr int kLinear = 4, kFromCorner = 5, kFromMiddle = 6, kScaled = 7;
  figure->fill = shape.fill;
  figure->opacity = shape.opacity;
  const int type = shape.fill_type;
  if (type < kLinear || type > kScaled) return;
  Gradient& gradient = figure->gradient.emplace(Gradient{});
  gradient.to = shape.other_fill;
  gradient.angle = -shape.fill_angle;
  gradient.radial = type == kFromCorner || type == kFromMiddle;
  gradient.turn = std::clamp(std::abs(shape.fill_focus) / 100.0, 0.0, 1.0);
  if (shape.fill_focus > 0) return;
  std::swap(*figure->fill, gradient.to);
  if (shape.fill_focus == 0) gradient.turn = 1;
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
  SetForm(&shape, name, value);
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
  if (name == "shapeType") shape->type = value;
  if (name == "fFilled") shape->filled = value != 0;
  if (name == "fillOpacity") shape->opacity = std::clamp(Degrees(value), 0.0, 1.0);
  if (name == "fillType") shape->fill_type = value;
  if (name == "fillAngle") shape->fill_angle = Degrees(value);
  if (name == "fillFocus") shape->fill_focus = value;
  if (name == "fillBackColor") SetColour(value, &shape->other_fill);
  if (name == "fLine") shape->lined = value != 0;
  if (name == "fillColor") SetColour(value, &shape->fill);
  if (name == "lineColor") SetColour(value, &shape->line);
  if (name == "lineWidth") shape->line_width = Twips(value, kWidestLine);
  if (name == "fFitShapeToText") shape->fits_text = value != 0;
  if (name == "txflTextFlow") {
    constexpr int kDown = 1, kUp = 2, kDownToo = 3, kDownUpright = 5;
    const bool down = value == kDown || value == kDownToo || value == kDownUpright;
    shape->direction = down           ? Cell::Direction::kDown
                       : value == kUp ? Cell::Direction::kUp
                                      : Cell::Direction::kAcross;
  }
  if (name == "fHidden") shape->hidden = value != 0;
  if (name == "fFlipH" || name == "fRelFlipH") shape->flip_x = value != 0;
  if (name == "fFlipV" || name == "fRelFlipV") shape->flip_y = value != 0;
  if (name == "rotation" || name == "relRotation") shape->rotation = std::fmod(Degrees(value), 360);
  if (name == "lineStartArrowhead") shape->arrow_at_start = value != 0;
  if (name == "lineEndArrowhead") shape->arrow_at_end = value != 0;
  if (name == "gtextFBold") shape->lettering.bold = value != 0;
  if (name == "gtextFItalic") shape->lettering.italic = value != 0;
}

// What decides the outline, or the letters, of the shape.
void ShapeReader::SetForm(Shape* shape, std::string_view name, std::string_view value) {
  static const std::unordered_map<std::string_view, double Area::*> kBox{
      {"geoLeft", &Area::left},
      {"geoTop", &Area::top},
      {"geoRight", &Area::right},
      {"geoBottom", &Area::bottom}};
  static const std::unordered_map<std::string_view, std::size_t> kAdjustments{{"adjustValue", 0},
                                                                              {"adjust2Value", 1}};
  if (const auto edge = kBox.find(name); edge != kBox.end())
    shape->form.*edge->second = Number(value);
  if (const auto adjusted = kAdjustments.find(name); adjusted != kAdjustments.end()) {
    shape->adjustments.resize(kAdjustments.size());
    shape->adjustments[adjusted->second] = Number(value);
  }
  if (name == "pVerticies") shape->points = value;
  if (name == "pSegmentInfo") shape->segments = value;
  if (name == "gtextUNICODE") shape->lettering.text = value;
  if (name == "gtextFont") shape->lettering.font = value;
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
  if (name == "pctHoriz") box_.width_share = std::clamp(value / 1000.0, 0.0, 1.0);
  if (name == "pctVert") box_.height_share = std::clamp(value / 1000.0, 0.0, 1.0);
  if (name == "sizerelh") box_.width_of = value == 1 ? From::kPage : From::kMargin;
  if (name == "sizerelv") box_.height_of = value == 1 ? From::kPage : From::kMargin;
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
