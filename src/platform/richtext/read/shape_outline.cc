#include "platform/richtext/read/shape_outline.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <unordered_map>
#include <utility>

namespace tenora::richtext {
namespace {

using Point = Outline::Point;
using Step = Outline::Step;

constexpr double kUnits = 21600;  // of the box that the outlines below are drawn in

// `path` is made of M (move), L (lines), C (curves), O (an ellipse in a box) and Z (close), each
// with the points that follow. A coordinate is a number, or the first or second adjustment (a, b),
// or that from the other side (A, B). A path without Z is open.
struct Drawn {
  std::array<int, 2> usual;
  std::string_view path;
};

const std::unordered_map<int, Drawn>& DrawnTypes() {
  static const std::unordered_map<int, Drawn> kTypes{
      {4, {{}, "M10800 0L21600 10800 10800 21600 0 10800Z"}},
      {5, {{10800}, "Ma 0L21600 21600 0 21600Z"}},
      {6, {{}, "M0 0L21600 21600 0 21600Z"}},
      {7, {{5400}, "Ma 0L21600 0 A 21600 0 21600Z"}},
      {8, {{5400}, "M0 0L21600 0 A 21600 a 21600Z"}},
      {9, {{5400}, "Ma 0LA 0 21600 10800 A 21600 a 21600 0 10800Z"}},
      {10, {{6326}, "Ma 0LA 0 21600 a 21600 A A 21600 a 21600 0 A 0 aZ"}},
      {11, {{5400}, "Ma 0LA 0 A a 21600 a 21600 A A A A 21600 a 21600 a A 0 A 0 a a aZ"}},
      {12,
       {{},
        "M10797 0L13321 8256 21600 8256 14878 13405 17401 21600 10797 16580 4198 21600 6722 13405 "
        "0 8256 8278 8256Z"}},
      {13, {{16200, 5400}, "M0 bLa b a 0 21600 10800 a 21600 a B 0 BZ"}},
      {15, {{16200}, "M0 0La 0 21600 10800 a 21600 0 21600Z"}},
      {19, {{}, "M0 0C11929 0 21600 9671 21600 21600"}},
      {22,
       {{},
        "M10800 0C16765 0 21600 1209 21600 2700L21600 18900C21600 20391 16765 21600 10800 21600 "
        "4835 21600 0 20391 0 18900L0 2700C0 1209 4835 0 10800 0Z"
        "M0 2700C0 4191 4835 5400 10800 5400 16765 5400 21600 4191 21600 2700"}},
      {23, {{5400}, "O0 0 21600 21600Oa a A A"}},
      {33, {{}, "M0 0L21600 0 21600 21600"}},
      {34, {{10800}, "M0 0La 0 a 21600 21600 21600"}},
      {37, {{}, "M0 0C11929 0 21600 9671 21600 21600"}},
      {38, {{}, "M0 0C5400 0 10800 5400 10800 10800 10800 16200 16200 21600 21600 21600"}},
      {55, {{16200}, "M0 0La 0 21600 10800 a 21600 0 21600 A 10800Z"}},
      {56, {{}, "M10800 0L21600 8259 17400 21600 4200 21600 0 8259Z"}},
      {61, {{1350, 25920}, "M0 0L21600 0 21600 21600 9000 21600 a b 3600 21600 0 21600Z"}},
      {66, {{5400, 5400}, "M21600 bLa b a 0 0 10800 a 21600 a B 21600 BZ"}},
      {67, {{16200, 5400}, "Mb 0LB 0 B a 21600 a 10800 21600 0 a b aZ"}},
      {68, {{5400, 5400}, "Mb 21600Lb a 0 a 10800 0 21600 a B a B 21600Z"}},
      {69, {{4320, 5400}, "M0 10800La 0 a b A b A 0 21600 10800 A 21600 A B a B a 21600Z"}},
      {70, {{5400, 4320}, "M10800 0L21600 b A b A B 21600 B 10800 21600 0 B a B a b 0 bZ"}},
      {74,
       {{},
        "M10860 2187C10451 1746 9529 1018 9015 730 7865 152 6685 0 5415 0 4175 152 2995 575 1967 "
        "1305 1150 2187 575 3222 242 4220 0 5410 242 6560 575 7597L10860 21600 20995 7597C21480 "
        "6560 21600 5410 21480 4220 21115 3222 20420 2187 19632 1305 18575 575 17425 152 16275 0 "
        "15005 0 13735 152 12705 730 12176 1018 11254 1746 10860 2187Z"}},
      {85, {{1800}, "M21600 0C9671 0 0 600 0 aL0 AC0 21000 9671 21600 21600 21600"}},
      {86, {{1800}, "M0 0C11929 0 21600 600 21600 aL21600 AC21600 21000 11929 21600 0 21600"}},
      {87,
       {{},
        "M21600 0C15635 0 10800 806 10800 1800L10800 9000C10800 9994 5965 10800 0 10800 5965 10800 "
        "10800 11606 10800 12600L10800 19800C10800 20794 15635 21600 21600 21600"}},
      {88,
       {{},
        "M0 0C5965 0 10800 806 10800 1800L10800 9000C10800 9994 15635 10800 21600 10800 15635 "
        "10800 10800 11606 10800 12600L10800 19800C10800 20794 5965 21600 0 21600"}},
      {110, {{}, "M10800 0L21600 10800 10800 21600 0 10800Z"}},
      {111, {{}, "M4321 0L21600 0 17204 21600 0 21600Z"}},
      {112, {{}, "M0 0L21600 0 21600 21600 0 21600ZM2610 0L2610 21600M18990 0L18990 21600"}},
      {114, {{}, "M0 0L21600 0 21600 17322C10800 17322 10800 23922 0 20172Z"}},
      {116,
       {{},
        "M3475 0L18125 0C20044 0 21600 4835 21600 10800 21600 16765 20044 21600 18125 21600L3475 "
        "21600C1556 21600 0 16765 0 10800 0 4835 1556 0 3475 0Z"}},
      {117, {{}, "M4353 0L17214 0 21600 10800 17214 21600 4353 21600 0 10800Z"}},
      {118, {{}, "M0 4292L21600 0 21600 21600 0 21600Z"}},
      {119, {{}, "M0 0L21600 0 17240 21600 4404 21600Z"}},
      {120, {{}, "O0 0 21600 21600"}},
      {127, {{}, "M10800 0L21600 21600 0 21600Z"}},
      {128, {{}, "M0 0L21600 0 10800 21600Z"}},
      {187,
       {{},
        "M10800 0L12709 8891 21600 10800 12709 12709 10800 21600 8891 12709 0 10800 8891 8891Z"}},
  };
  return kTypes;
}

void AddEllipse(const Point& from, const Point& to, std::vector<Step>* steps) {
  constexpr double kPull = 0.5523;  // of a quarter of a circle
  const Point middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
  const double wide = (to.x - from.x) / 2, high = (to.y - from.y) / 2;
  const auto at = [&](double x, double y) {
    return Point{middle.x + x * wide, middle.y + y * high};
  };
  using Kind = Step::Kind;
  steps->push_back({Kind::kMove, at(0, -1), {}, {}});
  steps->push_back({Kind::kCurve, at(1, 0), at(kPull, -1), at(1, -kPull)});
  steps->push_back({Kind::kCurve, at(0, 1), at(1, kPull), at(kPull, 1)});
  steps->push_back({Kind::kCurve, at(-1, 0), at(-kPull, 1), at(-1, kPull)});
  steps->push_back({Kind::kCurve, at(0, -1), at(-1, -kPull), at(-kPull, -1)});
  steps->push_back({Kind::kClose, {}, {}, {}});
}

// Reads a path of the table above.
class PathReader {
 public:
  PathReader(std::string_view path, std::array<double, 2> adjustments)
      : left_(path), adjustments_(adjustments) {}

  Outline Read() {
    Outline outline;
    outline.open = true;
    char order = 0;
    for (SkipBlanks(); !left_.empty(); SkipBlanks()) {
      if (constexpr std::string_view kOrders = "MLCOZ";
          kOrders.find(left_.front()) != kOrders.npos) {
        order = left_.front();
        left_.remove_prefix(1);
        if (order == 'O' || order == 'Z') outline.open = false;
        if (order == 'Z') outline.steps.push_back({Step::Kind::kClose, {}, {}, {}});
        continue;
      }
      const Point first = TakePoint();
      if (order == 'M') {
        outline.steps.push_back({Step::Kind::kMove, first, {}, {}});
      } else if (order == 'L') {
        outline.steps.push_back({Step::Kind::kLine, first, {}, {}});
      } else if (order == 'O') {
        AddEllipse(first, TakePoint(), &outline.steps);
      } else {
        const Point second = TakePoint();
        outline.steps.push_back({Step::Kind::kCurve, TakePoint(), first, second});
      }
    }
    return outline;
  }

 private:
  void SkipBlanks() { left_.remove_prefix(std::min(left_.find_first_not_of(' '), left_.size())); }
  Point TakePoint() {
    const double x = Take();
    return {x, Take()};
  }
  double Take() {
    SkipBlanks();
    if (left_.empty()) return 0;
    const char name = left_.front();
    if (name == 'a' || name == 'A' || name == 'b' || name == 'B') {
      left_.remove_prefix(1);
      const double value = adjustments_[name == 'b' || name == 'B' ? 1 : 0] / kUnits;
      return name == 'A' || name == 'B' ? 1 - value : value;
    }
    int number = 0;
    const char* const end = std::from_chars(left_.data(), left_.data() + left_.size(), number).ptr;
    left_.remove_prefix(std::max<std::ptrdiff_t>(end - left_.data(), 1));
    return number / kUnits;
  }

  std::string_view left_;
  std::array<double, 2> adjustments_;
};

// The whole numbers of a text, one after the other.
class Numbers {
 public:
  explicit Numbers(std::string_view text) : left_(text) {}

  std::optional<std::int64_t> Next() {
    left_.remove_prefix(std::min(left_.find_first_of("-0123456789"), left_.size()));
    if (left_.empty()) return std::nullopt;
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(left_.data(), left_.data() + left_.size(), number);
    left_.remove_prefix(std::max<std::ptrdiff_t>(end - left_.data(), 1));
    return error == std::errc() ? number : 0;
  }
  // Leaves out how long an entry is and how many there are.
  void SkipHead() {
    Next();
    Next();
  }

 private:
  std::string_view left_;
};

// A point that a formula of the shape gives, which is not known here, has numbers beyond this.
constexpr std::int64_t kFarthest = 0x40000000;

std::vector<Point> PointsOf(const FreeForm& form) {
  std::vector<Point> points;
  Numbers numbers(form.points);
  numbers.SkipHead();
  const double wide = form.right - form.left, high = form.bottom - form.top;
  while (const auto x = numbers.Next()) {
    const auto y = numbers.Next();
    if (!y || std::abs(*x) > kFarthest || std::abs(*y) > kFarthest) return {};
    points.push_back({wide == 0 ? 0 : (static_cast<double>(*x) - form.left) / wide,
                      high == 0 ? 0 : (static_cast<double>(*y) - form.top) / high});
  }
  return points;
}

// Joins points as segments say: what is done is in their three highest bits, how often in the
// others.
class SegmentJoiner {
 public:
  explicit SegmentJoiner(std::vector<Point> points) : points_(std::move(points)) {}

  void Take(std::int64_t segment) {
    enum { kLines = 0, kCurves = 1, kMove = 2, kClose = 3, kEnd = 4, kOther = 5 };
    const auto kind = static_cast<int>(segment >> 13 & 7);
    const auto count = static_cast<std::size_t>(segment & 0x1fff);
    if (kind == kLines) AddLines(std::max<std::size_t>(count, 1));
    if (kind == kCurves) AddCurves(std::max<std::size_t>(count, 1));
    if (kind == kMove) AddMove();
    if (kind == kClose) AddClose();
    if (kind != kOther) return;
    // Arcs are drawn as lines; the others have no points.
    const auto code = static_cast<int>(segment >> 8 & 0x1f);
    constexpr int kFirstArc = 1, kLastArc = 9;
    if (code >= kFirstArc && code <= kLastArc) AddLines(static_cast<std::size_t>(segment & 0xff));
  }
  void AddLines(std::size_t count) {
    for (; count > 0 && next_ < points_.size(); --count) {
      if (outline_.steps.empty()) {
        AddMove();
      } else {
        outline_.steps.push_back({Step::Kind::kLine, points_[next_++], {}, {}});
      }
    }
  }
  void AddMove() {
    if (next_ < points_.size())
      outline_.steps.push_back({Step::Kind::kMove, points_[next_++], {}, {}});
  }
  Outline TakeOutline() { return std::move(outline_); }

 private:
  void AddCurves(std::size_t count) {
    if (outline_.steps.empty()) AddMove();
    for (; count > 0 && points_.size() - next_ >= 3; --count, next_ += 3)
      outline_.steps.push_back(
          {Step::Kind::kCurve, points_[next_ + 2], points_[next_], points_[next_ + 1]});
  }
  void AddClose() {
    if (!outline_.steps.empty()) outline_.steps.push_back({Step::Kind::kClose, {}, {}, {}});
  }

  std::vector<Point> points_;
  std::size_t next_ = 0;
  Outline outline_;
};

}  // namespace

std::optional<Outline> OutlineOfType(int type, const Adjustments& adjustments) {
  const auto found = DrawnTypes().find(type);
  if (found == DrawnTypes().end()) return std::nullopt;
  std::array<double, 2> adjusted{};
  for (std::size_t i = 0; i < adjusted.size(); ++i) {
    const bool set = i < adjustments.size() && adjustments[i];
    constexpr double kMost = 10 * kUnits;
    adjusted[i] = set ? std::clamp<double>(*adjustments[i], -kMost, kMost) : found->second.usual[i];
  }
  return PathReader(found->second.path, adjusted).Read();
}

std::optional<Outline> OutlineOf(const FreeForm& form) {
  SegmentJoiner joiner(PointsOf(form));
  Numbers segments(form.segments);
  segments.SkipHead();
  bool joined = false;
  while (const auto segment = segments.Next()) {
    joiner.Take(*segment);
    joined = true;
  }
  if (!joined) joiner.AddLines(SIZE_MAX);
  Outline outline = joiner.TakeOutline();
  if (outline.steps.size() < 2) return std::nullopt;
  return outline;
}

void Flip(Outline* outline, bool left_to_right, bool top_to_bottom) {
  for (Step& step : outline->steps) {
    for (Point* const point : {&step.to, &step.first, &step.second}) {
      if (left_to_right) point->x = 1 - point->x;
      if (top_to_bottom) point->y = 1 - point->y;
    }
  }
}

}  // namespace tenora::richtext
