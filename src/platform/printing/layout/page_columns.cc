#include "platform/printing/layout/page_columns.h"

#include <QPen>
#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "platform/printing/layout/placed_strips.h"
#include "platform/richtext/page_heads.h"

namespace tenora::printing {
namespace {

constexpr int kMostColumns = 45;
constexpr int kUsualColumnGap = 720;
constexpr double kNarrowest = 300;
constexpr double kThinLine = 10;
constexpr int kBalanceSteps = 16;
constexpr double kSlack = 1;  // rounding of heights

struct OwnColumn {
  double width = 0, gap = 0;
};

// \colno1\colw2000\colsr400\colno2…
std::vector<OwnColumn> OwnColumns(std::string_view words) {
  std::vector<OwnColumn> columns;
  while (!words.empty()) {
    words.remove_prefix(1);
    const std::string_view word = words.substr(0, words.find('\\'));
    words.remove_prefix(word.size());
    const std::size_t digits = std::min(word.find_first_of("0123456789"), word.size());
    const std::string_view name = word.substr(0, digits);
    int number = 0;
    std::from_chars(word.data() + digits, word.data() + word.size(), number);
    if (name == "colno" && columns.size() < kMostColumns) columns.emplace_back();
    if (columns.empty()) continue;
    if (name == "colw") columns.back().width = number;
    if (name == "colsr") columns.back().gap = number;
  }
  return columns;
}

}  // namespace

VerticalPlace VerticalPlaceOf(const richtext::PageSetup& page) {
  using richtext::PageWord;
  if (PageWord(page, "vertalc")) return VerticalPlace::kCentre;
  if (PageWord(page, "vertalj")) return VerticalPlace::kJustified;
  const bool bottom = PageWord(page, "vertalb") || PageWord(page, "vertal");
  return bottom ? VerticalPlace::kBottom : VerticalPlace::kTop;
}

ColumnSetup ColumnsOf(const richtext::PageSetup& page, double text_width) {
  const int count = std::clamp(richtext::PageWord(page, "cols").value_or(1), 1, kMostColumns);
  ColumnSetup setup;
  setup.left = {0};
  setup.width = text_width;
  if (count == 1) return setup;
  setup.line_between = richtext::PageWord(page, "linebetcol").has_value();
  const std::vector<OwnColumn> own = OwnColumns(page.other_words);
  double end = 0, narrowest = text_width;
  std::vector<double> lefts;
  for (const OwnColumn& column : own) {
    lefts.push_back(end);
    end += column.width + column.gap;
    narrowest = std::min(narrowest, column.width);
  }
  if (own.size() == static_cast<std::size_t>(count) && narrowest >= kNarrowest &&
      lefts.back() + own.back().width <= text_width * 1.05) {
    setup.left = std::move(lefts);
    setup.width = narrowest;
    return setup;
  }
  const double gap = std::max(0, richtext::PageWord(page, "colsx").value_or(kUsualColumnGap));
  const double width = (text_width - gap * (count - 1)) / count;
  if (width < kNarrowest) return setup;
  for (int i = 1; i < count; ++i) setup.left.push_back(i * (width + gap));
  setup.width = width;
  return setup;
}

void PageColumns::Begin(ColumnSetup setup, double left) {
  EndColumns();
  top_ = y_ = lowest_ = std::max(lowest_, y_);
  // The space after the last strip is between it and what comes.
  const bool below = !page_empty_;
  // A foot as wide as the new columns is theirs as well; what they add to others is above these.
  if (setup.left.size() != 1 || setup_.left.size() != 1) {
    for (const Foot& foot : feet_) foot_bottom_ = std::min(foot_bottom_, foot.bottom - foot.height);
    bottom_ = foot_bottom_;
    foot_open_ = false;
  }
  setup_ = std::move(setup);
  left_ = left;
  column_ = 0;
  first_ = placed_.size();
  broken_ = false;
  empty_ = !below;
  if (setup_.left.size() > 1 && below) {
    top_ = y_ = std::min(y_ + std::exchange(space_after_, 0), bottom_);
    empty_ = true;
  }
}

void PageColumns::EndColumns() {
  if (!setup_.line_between || column_ == 0) return;
  for (std::size_t i = 1; i < setup_.left.size(); ++i) {
    const double x = left_ + (setup_.left[i - 1] + setup_.width + setup_.left[i]) / 2;
    lines_.push_back({x, top_, std::max(lowest_, y_)});
  }
}

bool PageColumns::NextColumn() {
  if (LastColumn()) return false;
  ++column_;
  lowest_ = std::max(lowest_, y_);
  y_ = top_;
  bottom_ = foot_bottom_;
  foot_open_ = false;
  space_after_ = 0;
  empty_ = true;
  return true;
}

std::size_t PageColumns::Distribute(double height, bool place) {
  std::size_t column = 0;
  double y = 0, after = 0;
  bool empty = true;
  for (std::size_t i = first_; i < placed_.size(); ++i) {
    const Strip& strip = *placed_[i].strip;
    double top = empty ? y : y + after + strip.space_before;
    if (!empty && top + strip.height > height + kSlack) {
      ++column;
      top = 0;
    }
    if (place) {
      column_ = std::min(column, setup_.left.size() - 1);
      placed_[i].corner = Corner(top_ + top);
      lowest_ = std::max(lowest_, top_ + top + strip.height);
    }
    y = top + strip.height;
    after = strip.space_after;
    empty = false;
  }
  return column + 1;
}

void PageColumns::Balance() {
  const std::size_t count = setup_.left.size();
  if (count < 2 || placed_.size() == first_ || broken_) return;
  // A note stays below the column with its mark.
  if (!feet_.empty()) return;
  // What floats stays where the text made room for it.
  const auto floats = [](const Placed& placed) { return !placed.strip->floating.empty(); };
  if (std::any_of(placed_.begin(), placed_.end(), floats)) return;
  double least = 0, most = ColumnHeight();
  for (int i = 0; i < kBalanceSteps; ++i) {
    const double height = (least + most) / 2;
    (Distribute(height, false) > count ? least : most) = height;
  }
  if (Distribute(most, false) > count) return;
  lowest_ = top_;
  Distribute(most, true);
  y_ = lowest_;
}

QPointF PageColumns::Corner(double y) const { return QPointF(left_ + setup_.left[column_], y); }

double PageColumns::Top(const Strip& strip) const {
  return empty_ ? y_ : y_ + space_after_ + strip.space_before;
}

void PageColumns::LeaveSpaceAbove(const Strip& strip) {
  if (y_ + strip.space_before + strip.height <= bottom_) y_ += strip.space_before;
}

double PageColumns::FindTop(Strip* strip) {
  const double top = Top(*strip);
  if (!strip->floating.empty()) taken_before_ = taken_;
  for (const Floating& one : strip->floating) taken_.Add(one, Corner(top));
  const double free = taken_.FreeBelow(*strip, Corner(top));
  // Where no page has room below what floats in the strip itself, it stays over or under that.
  if (empty_ && free + strip->height > bottom_ + kSlack) return top;
  strip->MoveBelowFloating(free - top);
  return free;
}

bool PageColumns::FloatsOffEnd(const Strip& strip) const {
  return std::ranges::any_of(strip.floating, [&](const Floating& one) {
    return !one.y_on_paper && one.wrap != richtext::ShapeBox::Wrap::kNone &&
           Top(strip) + one.y + one.height > bottom_ + kSlack && one.height <= ColumnHeight();
  });
}

void PageColumns::GiveBack(Strip* strip, double top) {
  if (strip->floating.empty()) return;
  taken_ = taken_before_;
  strip->MoveBelowFloating(Top(*strip) - top);
}

void PageColumns::Place(std::shared_ptr<Strip> strip, double top, bool begins) {
  y_ = top + strip->height;
  space_after_ = strip->space_after;
  // What only holds a frame leaves the top to the text.
  empty_ = empty_ && strip->height <= 0;
  page_empty_ = false;
  placed_.push_back({std::move(strip), Corner(top), 1, begins});
}

void PageColumns::PlaceRepeated(std::shared_ptr<Strip> strip) {
  const double top = y_;
  y_ += strip->height;
  placed_.push_back({std::move(strip), Corner(top), 1});
}

void PageColumns::PlaceAtFoot(std::shared_ptr<Strip> strip) {
  if (!std::exchange(foot_open_, true))
    feet_.push_back({left_ + setup_.left[column_], foot_bottom_, 0, {}});
  Foot& foot = feet_.back();
  foot.height += strip->space_before + strip->height + strip->space_after;
  foot.strips.push_back(std::move(strip));
  bottom_ = foot.bottom - foot.height;
}

void PageColumns::PlaceSmaller(std::shared_ptr<Strip> strip, double top) {
  const double scale = (bottom_ - top) / strip->height;
  y_ = bottom_;
  empty_ = page_empty_ = false;
  placed_.push_back({std::move(strip), Corner(top), scale});
}

bool PageColumns::TextMadeRoom() const {
  std::vector<PlacedFloating> floating;
  for (const Placed& placed : placed_) placed.strip->CollectFloating(placed.corner, &floating);
  return std::ranges::any_of(floating, [](const PlacedFloating& one) {
    return one.floating->y_on_paper && one.floating->wrap != richtext::ShapeBox::Wrap::kNone;
  });
}

void PageColumns::MoveDown(VerticalPlace place, bool full) {
  if (place == VerticalPlace::kTop || placed_.empty() || TextMadeRoom()) return;
  double text_bottom = page_top_, room_bottom = page_bottom_;
  for (const Placed& one : placed_)
    text_bottom = std::max(text_bottom, one.corner.y() + one.strip->height * one.scale);
  for (const Foot& foot : feet_) room_bottom = std::min(room_bottom, foot.bottom - foot.height);
  const double spare = room_bottom - text_bottom;
  if (spare <= 0) return;
  if (place != VerticalPlace::kJustified) {
    const double down = place == VerticalPlace::kCentre ? spare / 2 : spare;
    for (Placed& one : placed_) one.corner.ry() += down;
    for (Line& line : lines_) {
      line.top += down;
      line.bottom += down;
    }
    return;
  }
  // As word processors do: between paragraphs, of full pages, and not in columns.
  const bool columns = std::ranges::any_of(
      placed_, [&](const Placed& one) { return one.corner.x() != placed_.front().corner.x(); });
  const auto gaps = std::ranges::count_if(placed_.begin() + 1, placed_.end(), &Placed::begins);
  if (!full || columns || gaps == 0) return;
  double down = 0;
  for (std::size_t i = 1; i < placed_.size(); ++i) {
    if (placed_[i].begins) down += spare / double(gaps);
    placed_[i].corner.ry() += down;
  }
}

std::vector<TextRange> PageColumns::Ranges() const {
  std::vector<TextRange> ranges;
  for (const Placed& placed : placed_) placed.strip->CollectRanges(&ranges);
  for (const Foot& foot : feet_) {
    for (const auto& strip : foot.strips) strip->CollectRanges(&ranges);
  }
  return ranges;
}

// Strips without height, which hold frames, are no ends.
void PageColumns::SetEnds() const {
  const Placed* before = nullptr;
  bool begins = true;
  for (const Placed& placed : placed_) {
    if (placed.strip->height <= 0) continue;
    const bool goes_on = before != nullptr && before->corner.x() == placed.corner.x() &&
                         before->corner.y() < placed.corner.y();
    if (before != nullptr) before->strip->SetEnds(begins, !goes_on);
    begins = !goes_on;
    before = &placed;
  }
  if (before != nullptr) before->strip->SetEnds(begins, true);
}

void PageColumns::Draw(QPainter& painter) const {
  std::vector<PlacedFloating> floating;
  for (const Placed& placed : placed_) placed.strip->CollectFloating(placed.corner, &floating);
  SortByLayer(&floating);
  const auto draw_floating = [&](bool behind) {
    for (const PlacedFloating& one : floating) {
      if (one.floating->behind == behind) one.floating->content->Draw(painter, one.corner);
    }
  };
  draw_floating(true);
  SetEnds();
  for (const Placed& placed : placed_) {
    if (placed.scale == 1) {
      placed.strip->Draw(painter, placed.corner);
      continue;
    }
    painter.save();
    painter.translate(placed.corner);
    painter.scale(placed.scale, placed.scale);
    placed.strip->Draw(painter, QPointF());
    painter.restore();
  }
  draw_floating(false);
  for (const Foot& foot : feet_) {
    PlacedStrips strips;
    double y = foot.bottom - foot.height;
    for (const auto& strip : foot.strips) {
      y += strip->space_before;
      strips.Add(strip, QPointF(foot.left, y));
      y += strip->height + strip->space_after;
    }
    strips.Draw(painter);
  }
  if (lines_.empty()) return;
  painter.save();
  painter.setPen(QPen(Qt::black, kThinLine));
  for (const Line& line : lines_)
    painter.drawLine(QPointF(line.x, line.top), QPointF(line.x, line.bottom));
  painter.restore();
}

}  // namespace tenora::printing
