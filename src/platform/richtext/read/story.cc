#include "platform/richtext/read/story.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/richtext/document_text.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kLongestCode = 512;  // bytes that a code's beginning is looked for in
constexpr std::string_view kObjectCharacter = "\xef\xbf\xbc";  // U+FFFC

Colour GreyOfShading(int hundredths_of_percent) {
  const auto level = static_cast<std::uint8_t>(255 - 255 * hundredths_of_percent / 10000);
  return {.automatic = false, .red = level, .green = level, .blue = level};
}

// The words that only say what a place is relative to make no frame.
bool IsPlaced(const FramePlace& frame) {
  using Align = ShapeBox::Align;
  return frame.x != 0 || frame.y != 0 || frame.width != 0 || frame.height != 0 ||
         frame.x_align != Align::kAsSet || frame.y_align != Align::kAsSet;
}

std::size_t ParagraphCost(const ParagraphFormat& format) {
  return sizeof(Block) + format.tabs.size() * sizeof(TabStop);
}

}  // namespace

// Word processors put words for kerning into the middle of a code, which stays one run.
std::size_t Story::RestOfCode(std::string_view utf8, const CharFormat& format) const {
  if (runs_.empty()) return 0;
  const Run& last = runs_.back();
  if (last.format.kerned_from == format.kerned_from || last.object.index() != 0) return 0;
  CharFormat as_before = format;
  as_before.kerned_from = last.format.kerned_from;
  if (last.format != as_before) return 0;
  const std::string_view whole = last.text;
  const std::string_view text = whole.substr(whole.size() - std::min(whole.size(), kLongestCode));
  const std::size_t open = text.rfind("<<"), closed = text.rfind(">>");
  if (open == text.npos || (closed != text.npos && closed > open)) return 0;
  const std::size_t end = utf8.find(">>");
  return end == utf8.npos ? utf8.size() : end + 2;
}

void Story::Text(std::string_view utf8, const CharFormat& format,
                 const std::shared_ptr<const Field>& field) {
  if (const std::size_t rest = RestOfCode(utf8, format); rest > 0) {
    const CharFormat before = runs_.back().format;
    Text(utf8.substr(0, rest), before, field);
    utf8.remove_prefix(rest);
  }
  if (utf8.empty()) return;
  Run* last = runs_.empty() ? nullptr : &runs_.back();
  const bool plain = last != nullptr && last->object.index() == 0;
  const bool joins = plain && last->format == format && last->field == field;
  if (!joins && (context_.budget.Spend(sizeof(Run)) || !plain)) {
    runs_.push_back({format, {}, {}, field});
    last = &runs_.back();
  }
  last->text += utf8;
  length_ += utf8.size();
}

void Story::Object(Run run) {
  if (!context_.budget.Spend(sizeof(Run) + sizeof(Picture))) return;
  run.text = kObjectCharacter;
  length_ += run.text.size();
  runs_.push_back(std::move(run));
}

void Story::AddMark(std::string source) {
  if (context_.budget.Spend(sizeof(Mark))) marks_.push_back({length_, std::move(source)});
}

void Story::NumberParagraph(ParagraphFormat* format) {
  if (std::exchange(counted_level_, state_.TableLevel()) != counted_level_) numbers_.EndAll();
  if (state_.list >= 0) ApplyList(format);
  numbers_.Next(*format);
}

// The bullet of an item is chosen so that counting the letter's bullets gives the number that the
// list table gives.
void Story::ApplyList(ParagraphFormat* format) {
  const ListTable::Item item = context_.lists.Next(state_.list, state_.list_level);
  if (item.bullet.kind == Bullet::Kind::kNone) return;
  Bullet& bullet = format->bullet = item.bullet;
  if (bullet.font) bullet.font = context_.fonts.FontOfMark(*bullet.font);
  if (bullet.kind == Bullet::Kind::kBullet) return;
  bullet.start = item.last->start;
  bullet.list = item.last->list;
  if (bullet != *item.last || numbers_.Peek(*format) != item.number) {
    bullet.start = item.number;
    for (bullet.list = 0; numbers_.Peek(*format) != item.number; ++bullet.list) {
    }
  }
  *item.last = bullet;
}

void Story::TakeParagraph(const CharFormat& mark, Paragraph* paragraph) {
  // runs_ keeps its room for the next paragraph.
  paragraph->runs.assign(std::make_move_iterator(runs_.begin()),
                         std::make_move_iterator(runs_.end()));
  runs_.clear();
  paragraph->marks = std::exchange(marks_, {});
  length_ = 0;
  ++serial_;
  paragraph->mark = mark;
  paragraph->format = state_.format;
  ParagraphFormat& format = paragraph->format;
  if (state_.shading > 0 && format.shading == 0)
    format.shading = context_.colours.Add(GreyOfShading(state_.shading));
  if (format.automatic_before) format.space_before = context_.page.AutomaticSpace();
  if (format.automatic_after) format.space_after = context_.page.AutomaticSpace();
  for (Border* border :
       {&format.top, &format.bottom, &format.left, &format.right, &format.between}) {
    if (!border->present) *border = Border();
  }
  if (format.frame && !IsPlaced(*format.frame)) format.frame.reset();
  if (state_.contextual_space) format.contextual_style = state_.style;
  NumberParagraph(&format);
  if (format.bullet.kind == Bullet::Kind::kBullet) context_.fonts.SymbolPosition();
  MoveMarksOutOfCodes(paragraph);
}

void Story::EndParagraph(const CharFormat& mark) {
  if (!context_.budget.Spend(ParagraphCost(state_.format))) return Text("\v", mark, nullptr);
  TakeParagraph(mark, &blocks_.AddParagraph(state_.TableLevel()));
}

void Story::EndCellAt(int level, const CharFormat& mark) {
  if (!context_.budget.Spend(ParagraphCost(state_.format) + sizeof(Cell)))
    return Text("\t", mark, nullptr);
  TakeParagraph(mark, &blocks_.AddParagraph(level));
  blocks_.EndCell();
  numbers_.EndAll();
}

void Story::EndCell(const CharFormat& mark) { EndCellAt(1, mark); }

void Story::EndNestedCell(const CharFormat& mark) {
  EndCellAt(std::max(2, state_.TableLevel()), mark);
}

void Story::EndRow(const CharFormat& mark) {
  if (!runs_.empty()) EndCell(mark);
  const RowDefinition& definition = Definition(1);
  if (context_.budget.Spend(sizeof(Row) + definition.size() * 4))
    blocks_.EndRow(1, definition);
  else
    blocks_.EndRow(1, RowDefinition());
}

void Story::EndNestedRow() {
  const int level = std::max(2, state_.TableLevel());
  const RowDefinition definition = std::exchange(Definition(level), RowDefinition());
  blocks_.EndRow(level, definition);
}

// An empty paragraph before the break is there only where no paragraph could end the section.
void Story::EndSection(const CharFormat& mark, const std::shared_ptr<const Section>& next) {
  Paragraph* last = runs_.empty() ? blocks_.LastParagraph() : nullptr;
  if (last == nullptr || last->next_section != nullptr) {
    state_.in_table = false;
    state_.nesting = 0;
    EndParagraph(mark);
    last = blocks_.LastParagraph();
  }
  if (last != nullptr) last->next_section = next;
}

std::vector<Block> Story::Finish(const CharFormat& mark) {
  const bool cell_open = state_.TableLevel() > 0 && !runs_.empty();
  // Also when the budget is used up: what could not be put into paragraphs stands in this one.
  if (!runs_.empty() || (blocks_.Empty(0) && !cell_open)) {
    TakeParagraph(mark, &blocks_.AddParagraph(state_.TableLevel()));
  }
  std::vector<Mark> marks = std::move(marks_);
  std::vector<Block> blocks = blocks_.Finish(mark);
  auto& last = std::get<Paragraph>(blocks.back());
  last.next_section = nullptr;  // nothing is in it
  std::size_t end = 0;
  for (const Run& run : last.runs) end += run.text.size();
  for (Mark& mark_left : marks) last.marks.push_back({end, std::move(mark_left.source)});
  return blocks;
}

void Story::RestoreState() {
  if (saved_.empty()) return;
  state_ = std::move(saved_.back());
  saved_.pop_back();
}

RowDefinition& Story::Definition(int level) {
  const auto index = static_cast<std::size_t>(level - 1);
  if (definitions_.size() <= index) definitions_.resize(index + 1);
  return definitions_[index];
}

int Story::RowLevel(bool nested) const { return nested ? std::max(2, state_.TableLevel()) : 1; }

bool Story::TakeRowWord(const Token& word, bool nested) {
  return Definition(RowLevel(nested)).Take(word, context_.colours);
}

void Story::LeaveRowWords(bool nested) { Definition(RowLevel(nested)).LeaveEdge(); }

}  // namespace tenora::richtext
