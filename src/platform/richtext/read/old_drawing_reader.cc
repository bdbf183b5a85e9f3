#include "platform/richtext/read/old_drawing_reader.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/richtext/read/shape_outline.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kMostFigures = 1000;
constexpr std::size_t kDeepestGroup = 16;
constexpr std::size_t kMostPoints = 10'000;
constexpr int kWidestLine = 1440;  // twips

int OnPage(int twips) { return std::clamp(twips, -kLargestPage, kLargestPage); }

bool IsKind(std::string_view word) {
  static constexpr std::string_view kKinds[] = {"dptxbx", "dprect",     "dpellipse",
                                                "dpline", "dppolyline", "dppolygon",
                                                "dparc",  "dpcallout",  "dpgroup"};
  return std::ranges::find(kKinds, word) != std::end(kKinds);
}

}  // namespace

void OldDrawingReader::Word(const Token& word) {
  using From = ShapeBox::From;
  static const std::unordered_map<std::string_view, From> kX{
      {"dobxpage", From::kPage}, {"dobxmargin", From::kMargin}, {"dobxcolumn", From::kText}};
  static const std::unordered_map<std::string_view, From> kY{
      {"dobypage", From::kPage}, {"dobymargin", From::kMargin}, {"dobypara", From::kText}};
  static const std::unordered_map<std::string_view, int Primitive::*> kPlaces{
      {"dpx", &Primitive::x},
      {"dpy", &Primitive::y},
      {"dpxsize", &Primitive::width},
      {"dpysize", &Primitive::height}};
  if (const auto x = kX.find(word.text); x != kX.end()) box_.x_from = x->second;
  if (const auto y = kY.find(word.text); y != kY.end()) box_.y_from = y->second;
  if (word.text == "dodhgt") in_front_ = true;
  if (!word.text.starts_with("dp")) return;
  if (IsKind(word.text)) return Begin(word.text);
  if (const auto place = kPlaces.find(word.text); place != kPlaces.end()) {
    now_.*place->second = OnPage(word.param);
  } else if (word.text == "dpendgroup") {
    End();
    if (!corners_.empty()) corners_.pop_back();
  } else if (word.text == "dpptx" && now_.points.size() < kMostPoints) {
    now_.points.emplace_back(OnPage(word.param), 0);
  } else if (word.text == "dppty" && !now_.points.empty()) {
    now_.points.back().second = OnPage(word.param);
  } else {
    StyleWord(word);
  }
}

void OldDrawingReader::StyleWord(const Token& word) {
  static const std::unordered_map<std::string_view, std::uint8_t Colour::*> kLine{
      {"dplinecor", &Colour::red}, {"dplinecog", &Colour::green}, {"dplinecob", &Colour::blue}};
  static const std::unordered_map<std::string_view, std::uint8_t Colour::*> kFill{
      {"dpfillbgcr", &Colour::red}, {"dpfillbgcg", &Colour::green}, {"dpfillbgcb", &Colour::blue}};
  Figure& figure = now_.figure;
  const auto set = [&](std::optional<Colour>* colour, std::uint8_t Colour::*part) {
    if (!*colour) colour->emplace();
    **colour.*part = static_cast<std::uint8_t>(std::clamp(word.param, 0, 255));
  };
  if (const auto line = kLine.find(word.text); line != kLine.end()) {
    set(&figure.line, line->second);
  } else if (const auto fill = kFill.find(word.text); fill != kFill.end()) {
    set(&figure.fill, fill->second);
  } else if (word.text == "dplinew") {
    figure.line_width = std::clamp(word.param, 0, kWidestLine);
  } else if (word.text == "dplinehollow") {
    now_.hollow = true;
  } else if (word.text == "dpfillpat") {
    now_.clear = word.param == 0;
  } else if (word.text == "dparcflipx") {
    now_.flip_x = true;
  } else if (word.text == "dparcflipy") {
    now_.flip_y = true;
  } else if (word.text == "dpastartsol" || word.text == "dpastarthol") {
    figure.arrow_at_start = true;
  } else if (word.text == "dpaendsol" || word.text == "dpaendhol") {
    figure.arrow_at_end = true;
  } else if (word.text == "dproundr") {
    figure.kind = Figure::Kind::kRounded;
  } else if (word.text == "dptxbxmar") {
    const int inset = std::clamp(word.param, 0, kLargestPage);
    figure.inset = {inset, inset, inset, inset};
  }
}

void OldDrawingReader::AddBlocks(std::vector<Block> blocks) {
  now_.figure.blocks = std::move(blocks);
}

void OldDrawingReader::Begin(std::string_view kind) {
  End();
  now_.group = kind == "dpgroup";
  now_.drawn = !now_.group && kind != "dpcallout";
  now_.arc = kind == "dparc";
  now_.closed = kind == "dppolygon";
  now_.figure.kind = kind == "dpellipse"                      ? Figure::Kind::kEllipse
                     : kind == "dpline"                       ? Figure::Kind::kLine
                     : kind.starts_with("dppoly") || now_.arc ? Figure::Kind::kOutline
                                                              : Figure::Kind::kRectangle;
}

// Points are relative to the primitive's place; those of a line say where it begins.
Outline OldDrawingReader::OutlineOf(const Primitive& primitive) {
  using Kind = Outline::Step::Kind;
  Outline outline;
  if (primitive.arc) {
    constexpr double kPull = 0.5523;  // of a quarter of a circle
    outline.steps = {{Kind::kMove, {0, 0}, {}, {}},
                     {Kind::kCurve, {1, 1}, {kPull, 0}, {1, 1 - kPull}}};
    Flip(&outline, primitive.flip_x, primitive.flip_y);
    return outline;
  }
  const double width = std::max(primitive.width, 1), height = std::max(primitive.height, 1);
  for (const auto& [x, y] : primitive.points) {
    const Kind kind = outline.steps.empty() ? Kind::kMove : Kind::kLine;
    outline.steps.push_back({kind, {x / width, y / height}, {}, {}});
  }
  if (primitive.closed) outline.steps.push_back({Kind::kClose, {}, {}, {}});
  outline.open = !primitive.closed;
  return outline;
}

void OldDrawingReader::End() {
  Primitive primitive = std::exchange(now_, Primitive());
  const auto [left, top] = corners_.empty() ? std::pair(0, 0) : corners_.back();
  const int x = OnPage(left + primitive.x), y = OnPage(top + primitive.y);
  if (primitive.group) {
    if (corners_.size() < kDeepestGroup) corners_.emplace_back(x, y);
    return;
  }
  Figure& figure = primitive.figure;
  if (!primitive.drawn && figure.blocks.empty()) return;
  if (figures_.size() >= kMostFigures) return;
  figure.left = x;
  figure.top = y;
  figure.right = x + std::max(primitive.width, 0);
  figure.bottom = y + std::max(primitive.height, 0);
  if (figure.kind == Figure::Kind::kLine && primitive.points.size() == 2) {
    const auto [one, other] = std::pair(primitive.points[0], primitive.points[1]);
    figure.rising = (one.first < other.first) != (one.second < other.second);
    if (figure.arrow_at_start || figure.arrow_at_end) figure.kind = Figure::Kind::kOutline;
  }
  if (figure.kind == Figure::Kind::kOutline) {
    figure.outline = OutlineOf(primitive);
    if (figure.outline.steps.size() < 2) return;
  }
  if (!figure.line) figure.line.emplace();
  if (primitive.hollow) figure.line.reset();
  if (primitive.clear || figure.kind == Figure::Kind::kLine || figure.outline.open)
    figure.fill.reset();
  figures_.push_back(std::move(figure));
}

ShapeBox OldDrawingReader::box() {
  End();
  box_.behind = !in_front_;
  for (const Figure& figure : figures_) {
    const bool first = &figure == &figures_.front();
    box_.left = first ? figure.left : std::min(box_.left, figure.left);
    box_.top = first ? figure.top : std::min(box_.top, figure.top);
    box_.right = first ? figure.right : std::max(box_.right, figure.right);
    box_.bottom = first ? figure.bottom : std::max(box_.bottom, figure.bottom);
  }
  return box_;
}

std::vector<std::shared_ptr<const Figure>> OldDrawingReader::TakeFigures() {
  std::vector<std::shared_ptr<const Figure>> taken;
  for (Figure& figure : figures_) {
    figure.left -= box_.left;
    figure.right -= box_.left;
    figure.top -= box_.top;
    figure.bottom -= box_.top;
    taken.push_back(std::make_shared<const Figure>(std::move(figure)));
  }
  figures_.clear();
  return taken;
}

}  // namespace tenora::richtext
