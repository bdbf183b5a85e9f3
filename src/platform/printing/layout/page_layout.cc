#include "platform/printing/layout/page_layout.h"

#include <algorithm>
#include <utility>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/note_layout.h"
#include "platform/printing/layout/rule.h"

namespace tenora::printing {
namespace {

using Begin = richtext::Section::Begin;

constexpr double kSlack = 1;  // rounding of heights, twips
// A row up to this share of the page moves to the next page whole; a taller one is divided.
constexpr double kWholeRowShare = 0.5;
// Header rows that leave less than this share of the page are not repeated.
constexpr double kHeaderShare = 0.5;
constexpr double kLeastRoom = 144;  // between margins, twips
// Of a column, for the rest of a footnote from the page before.
constexpr double kNoteShare = 0.5;
constexpr int kNumberRounds = 3;

// How many of the lines of a paragraph with widow control, of which some may stand in the column
// before, must begin with the next one in one column.
std::size_t LinesTogether(const BlockStrips& paragraph, bool started) {
  const std::size_t lines = paragraph.strips.size();
  if (started) return lines == 2 ? 2 : 1;
  return lines <= 3 ? lines : 2;
}

double HeightOf(const Strip& strip) {
  return strip.space_before + strip.height + strip.space_after;
}

}  // namespace

PageLayout::PageLayout(const richtext::Document& document, const PageFrame& frame,
                       SharedResources& resources)
    : frame_(frame),
      resources_(resources),
      context_(document, frame.first, resources),
      sections_(richtext::SectionsOf(document)),
      length_(DocumentLength(document)) {
  auto numbers = std::make_shared<BodyNumbers>(document, *context_.notes, sections_);
  if (!numbers->empty()) {
    context_.numbers = std::move(numbers);
    FindBodyNumbers();
  }
  Restart();
}

PageLayout::PageLayout(const PageLayout& other, Anew)
    : frame_(other.frame_),
      resources_(other.resources_),
      context_(other.context_),
      sections_(other.sections_),
      length_(other.length_) {
  Restart();
}

// A number may push itself, or another, to the next page and back: then the last one stays.
void PageLayout::FindBodyNumbers() {
  for (int round = 0; round < kNumberRounds; ++round) {
    CountPages();
    if (!context_.numbers->Update(totals_)) return;
  }
}

int PageLayout::DrawPage(QPainter& painter, int from, int to) {
  if (from != next_) StartAt(from);
  FillPage(&painter, to);
  return next_;
}

const richtext::PageSetup& PageLayout::NextPageSetup() const {
  const std::size_t section = pending_.empty() ? section_ : pending_.front().section;
  return *sections_[section].page;
}

// Margins that leave no room do not count.
PageArea PageLayout::AreaOf(const richtext::DocumentSection& section) const {
  const PageArea& first = frame_.first;
  if (section.page == sections_.front().page) return first;
  const richtext::PageSetup page = richtext::WithGutter(*section.page, *sections_.front().page);
  PageArea area;
  const Paper paper = PaperFor(page, frame_.printers, frame_.any_size);
  area.paper_width = paper.width;
  area.paper_height = paper.height;
  area.left = frame_.left_kept ? first.left : page.left;
  area.top = frame_.top_kept ? first.top : page.top;
  area.right =
      area.paper_width - (frame_.right_kept ? first.paper_width - first.right : page.right);
  area.bottom =
      area.paper_height - (frame_.bottom_kept ? first.paper_height - first.bottom : page.bottom);
  if (area.width() >= kLeastRoom && area.height() >= kLeastRoom) return area;
  return {area.paper_width, area.paper_height, 0, 0, area.paper_width, area.paper_height};
}

// Of mirrored margins, the left one of a page with an even number is the right one of the others.
double PageLayout::Shift(const PageArea& area) const {
  const bool mirrored = !frame_.left_kept && !frame_.right_kept && page_.number % 2 == 0 &&
                        richtext::PageWord(*sections_.front().page, "margmirror").has_value();
  return mirrored ? area.paper_width - area.right - area.left : 0;
}

LayoutContext PageLayout::ContextOf(std::size_t section) const {
  LayoutContext context = context_;
  context.area = AreaOf(sections_[section]);
  return context;
}

HeadersAndFooters& PageLayout::HeadsOf(std::size_t section) {
  if (heads_ == nullptr || heads_section_ != section) {
    heads_ = std::make_unique<HeadersAndFooters>(ContextOf(section), sections_[section]);
    heads_section_ = section;
  }
  return *heads_;
}

// What is laid out from now on belongs to the section.
void PageLayout::EnterSection(std::size_t section) {
  load_section_ = section;
  context_.area = AreaOf(sections_[section]);
  context_.page_height = HeadsOf(section).LeastBodyHeight();
  const double width = ColumnsOf(*sections_[section].page, context_.area.width()).width;
  const bool goes_on = section > 0 && sections_[section].begin == Begin::kContinuous;
  if (goes_on) return blocks_->BeginSection(width, std::nullopt);
  blocks_->BeginSection(width, QPointF(context_.area.left, HeadsOf(section).BodyOf(1, 1).top));
}

void PageLayout::FillPage(QPainter* painter, int to) {
  BeginPage();
  if (painter != nullptr && totals_.pages == 0 && HeadsOf(page_.section).ShowPageCount())
    CountPages();
  while (Load(1)) {
    const Pending& front = pending_.front();
    if (to >= 0 && front.block.strips.front()->begin >= to) break;
    if (front.section != section_ && !NextSection()) {
      break_ahead_ = true;
      break;
    }
    const Outcome outcome = PlaceNext();
    if (outcome == Outcome::kPlaced) continue;
    if (outcome == Outcome::kPageFull || !columns_->NextColumn()) break;
    BeginColumn();
  }
  if (!Load(1)) FillFoot(columns_->Left());
  columns_->EndColumns();
  const bool goes_on = Load(1) && !break_ahead_;
  columns_->MoveDown(VerticalPlaceOf(*sections_[page_.section].page), goes_on);
  if (painter != nullptr) Draw(*painter);
  next_ = length_;
  if (Load(1))
    next_ = pending_.front().block.strips.front()->begin;
  else if (!waiting_notes_.empty())
    next_ = waiting_notes_.front()->begin;
}

PageLayout::PageCount PageLayout::NextPage() {
  PageCount next = page_;
  ++next.page;
  next.section = Load(1) ? pending_.front().section : section_;
  ++next.number;
  ++next.in_section;
  if (next.section == page_.section && page_.page > 0) return next;
  const bool begun = page_.page > 0 && next.section == section_;  // further up on the page before
  next.in_section = begun ? 2 : 1;
  if (begun) return next;
  if (const auto first = HeadsOf(next.section).FirstNumber()) next.number = *first;
  // The empty page that makes the next one even or odd is not printed.
  const Begin begin = sections_[next.section].begin;
  const bool even = next.number % 2 == 0;
  if (page_.page > 0 &&
      ((begin == Begin::kEvenPage && !even) || (begin == Begin::kOddPage && even)))
    ++next.number;
  return next;
}

void PageLayout::BeginPage() {
  page_before_ = page_;
  page_ = NextPage();
  section_ = page_.section;
  const HeadersAndFooters::Body body = HeadsOf(section_).BodyOf(page_.in_section, page_.number);
  const PageArea area = AreaOf(sections_[section_]);
  columns_ = std::make_unique<PageColumns>(body.top, body.bottom);
  columns_->Begin(ColumnsOf(*sections_[section_].page, area.width()), area.left + Shift(area));
  BeginColumn();
}

void PageLayout::BeginColumn() {
  const bool text = Load(1);
  FillFoot(text ? columns_->ColumnHeight() * kNoteShare : columns_->ColumnHeight());
  if (text) PlaceRepeatedHeader();
}

bool PageLayout::NextSection() {
  const std::size_t next = pending_.front().section;
  const richtext::DocumentSection& section = sections_[next];
  const PageArea area = AreaOf(section);
  const PageArea before = AreaOf(sections_[section_]);
  const bool same_paper =
      area.paper_width == before.paper_width && area.paper_height == before.paper_height;
  if (section.begin == Begin::kColumn && same_paper && columns_->NextColumn()) {
    section_ = next;
    return true;
  }
  if (section.begin != Begin::kContinuous || !same_paper) return false;
  if (!richtext::PageWord(*sections_.front().page, "nocolbal")) columns_->Balance();
  columns_->Begin(ColumnsOf(*section.page, area.width()), area.left + Shift(area));
  section_ = next;
  return true;
}

void PageLayout::Draw(QPainter& painter) {
  richtext::PageNumbers numbers;
  numbers.page = page_.number;
  numbers.section = static_cast<int>(page_.section) + 1;
  if (totals_.pages > 0) {
    numbers.pages = totals_.pages;
    numbers.section_pages = totals_.by_section[page_.section];
  }
  DrawBorders(painter);
  const double shift = Shift(AreaOf(sections_[page_.section]));
  HeadsOf(page_.section).Draw(painter, page_.in_section, numbers, shift);
  columns_->Draw(painter);
}

// Of the section in which the page begins.
void PageLayout::DrawBorders(QPainter& painter) {
  const std::optional<richtext::PageBorders>& borders = sections_[page_.section].page->borders;
  if (!borders) return;
  using Pages = richtext::PageBorders::Pages;
  const bool first = page_.in_section == 1;
  if (borders->pages == (first ? Pages::kAllButFirst : Pages::kFirst)) return;
  const BoxRules rules{
      RuleOf(borders->top, *context_.fonts), RuleOf(borders->left, *context_.fonts),
      RuleOf(borders->bottom, *context_.fonts), RuleOf(borders->right, *context_.fonts)};
  const PageArea area = AreaOf(sections_[page_.section]);
  if (borders->from_paper) {
    const QRectF paper(0, 0, area.paper_width, area.paper_height);
    DrawBox(painter, rules,
            paper.adjusted(borders->left.space, borders->top.space, -borders->right.space,
                           -borders->bottom.space));
    return;
  }
  const HeadersAndFooters::Body body =
      HeadsOf(page_.section)
          .WithHeads(page_.in_section, page_.number, borders->around_header,
                     borders->around_footer);
  const auto room = [](const richtext::Border& border, const Rule& rule) {
    return border.space + rule.Thickness();
  };
  const QRectF text(area.left + Shift(area), body.top, area.width(), body.height());
  DrawBox(painter, rules,
          text.adjusted(-room(borders->left, rules.left), -room(borders->top, rules.top),
                        room(borders->right, rules.right), room(borders->bottom, rules.bottom)));
}

// Counting needs no page numbers in the headers: they do not change the headers' heights.
void PageLayout::CountPages() {
  PageLayout pages(*this, Anew());
  totals_.by_section.assign(sections_.size(), 0);
  for (int begin = -1; pages.next_ < length_ && pages.next_ > begin;) {
    begin = pages.next_;
    pages.FillPage(nullptr, -1);
    ++totals_.by_section[pages.page_.section];
    if (context_.numbers) context_.numbers->AddPage(pages.page_.number, pages.columns_->Ranges());
  }
  totals_.pages = pages.page_.page;
}

void PageLayout::Restart() {
  pending_.clear();
  waiting_notes_.clear();
  endnotes_loaded_ = 0;
  blocks_ = std::make_unique<BlockLayout>(context_, context_.document.blocks, frame_.first.width(),
                                          0, 0, BlockLayout::Ending::kVisible);
  EnterSection(0);
  next_ = 0;
  section_ = 0;
  page_ = page_before_ = {};
  break_ahead_ = false;
}

// Fills pages until one ends at the position or after it.
void PageLayout::SkipTo(int position) {
  for (int begin = -1; next_ < std::min(position, length_) && next_ > begin;) {
    begin = next_;
    FillPage(nullptr, -1);
  }
}

void PageLayout::StartAt(int position) {
  Restart();
  SkipTo(position);
  if (next_ == position) return;
  // No page begins at the position.
  const PageCount pages = page_before_;
  const std::size_t section = pages.section;
  Restart();
  while (Load(1) && pending_.front().block.strips.front()->end <= position) DropStrip();
  next_ = position;
  page_ = pages;
  section_ = section;
}

bool PageLayout::Load(std::size_t count) {
  while (pending_.size() < count) {
    while (load_section_ + 1 < sections_.size() &&
           blocks_->block() >= sections_[load_section_].end_block) {
      EnterSection(load_section_ + 1);
    }
    auto block = blocks_->Next();
    if (!block) {
      if (!LoadEndnote()) return false;
      continue;
    }
    if (!block->strips.empty()) pending_.push_back({std::move(*block), load_section_, false});
  }
  return true;
}

// The endnotes go on where the text ends.
bool PageLayout::LoadEndnote() {
  const std::vector<Note>& notes = context_.notes->endnotes();
  if (endnotes_loaded_ >= notes.size()) return false;
  const Note& note = notes[endnotes_loaded_];
  const double width = ColumnsOf(*sections_[load_section_].page, context_.area.width()).width;
  BlockStrips block;
  block.strips = LayOutNote(context_, note, width);
  if (endnotes_loaded_ == 0) block.strips.push_front(NoteSeparator(note.position));
  ++endnotes_loaded_;
  if (!block.strips.empty()) pending_.push_back({std::move(block), load_section_, false});
  return true;
}

Strips PageLayout::NotesIn(const Strip& strip) {
  Strips found;
  const std::vector<Note>& notes = context_.notes->footnotes();
  auto note = std::ranges::lower_bound(notes, strip.begin, {}, &Note::anchor);
  for (; note != notes.end() && note->anchor < strip.end; ++note) {
    for (auto& line : LayOutNote(context_, *note, columns_->width()))
      found.push_back(std::move(line));
  }
  return found;
}

void PageLayout::FillFoot(double room) {
  while (!waiting_notes_.empty()) {
    const std::shared_ptr<Strip> line = waiting_notes_.front();
    std::shared_ptr<Strip> separator;
    if (columns_->foot_empty()) separator = NoteSeparator(line->begin);
    // A page of nothing but notes has at least one line of them.
    const bool must = separator != nullptr && columns_->page_empty() && !Load(1);
    const double needed = HeightOf(*line) + (separator == nullptr ? 0 : HeightOf(*separator));
    if (needed > room + kSlack && !must) return;
    room -= needed;
    if (separator != nullptr) columns_->PlaceAtFoot(std::move(separator));
    columns_->PlaceAtFoot(line);
    waiting_notes_.pop_front();
  }
}

void PageLayout::DropStrip() {
  Pending& front = pending_.front();
  front.started = true;
  front.block.strips.pop_front();
  if (front.block.strips.empty()) pending_.pop_front();
}

// Whether the next block, with those it must stay with, fits into the next column but not into what
// is left of this one.
bool PageLayout::WantsNextColumn(double available_height) {
  const double next_height =
      columns_->LastColumn()
          ? HeadsOf(page_.section).BodyOf(page_.in_section + 1, page_.number + 1).height()
          : columns_->ColumnHeight();
  double needed = columns_->space_after();
  for (std::size_t i = 0; Load(i + 1); ++i) {
    const BlockStrips& block = pending_[i].block;
    if (pending_[i].section != pending_.front().section) break;
    const bool whole = block.keep_together || block.keep_with_next;
    std::size_t lines = 0;
    for (const auto& strip : block.strips) {
      if (strip != block.strips.front() && strip->BreaksBefore()) break;
      needed += strip->space_before + strip->height;
      ++lines;
      const bool enough =
          !whole && lines >= (block.widow_control ? LinesTogether(block, false) : 1);
      if (enough || needed > next_height) break;
      needed += strip->space_after;
    }
    if (!block.keep_with_next || needed > next_height) break;
  }
  return needed > available_height + kSlack && needed <= next_height;
}

bool PageLayout::LeavesLineAlone() const {
  const Pending& front = pending_.front();
  const Strips& lines = front.block.strips;
  if (!front.block.widow_control || lines.size() < 2) return false;
  const std::size_t together = LinesTogether(front.block, front.started);
  double y = 0;
  for (std::size_t i = 0; i < together; ++i) {
    const Strip& line = *lines[i];
    if (i > 0 && line.BreaksBefore()) return false;
    if (i > 0 || !columns_->column_empty()) y += line.space_before;
    y += line.height;
  }
  return together > 1 && y + columns_->space_after() > columns_->Left() + kSlack;
}

void PageLayout::PlaceRepeatedHeader() {
  const Pending& front = pending_.front();
  if (!front.block.header) return;
  const Strips& header = *front.block.header;
  if (front.block.strips.front()->begin < header.back()->end) return;
  double total = 0;
  for (const auto& strip : header) total += strip->height;
  if (total > columns_->ColumnHeight() * kHeaderShare) return;
  for (const auto& strip : header) columns_->PlaceRepeated(strip);
}

PageLayout::Outcome PageLayout::PlaceNext() {
  Pending& front = pending_.front();
  const std::shared_ptr<Strip> strip = front.block.strips.front();
  if (std::exchange(strip->column_break_before, false)) {
    if (columns_->single()) {
      strip->page_break_before = true;
    } else {
      columns_->Break();
      break_ahead_ = true;
      return Outcome::kColumnFull;
    }
  }
  const bool breaks = std::exchange(strip->page_break_before, false);
  if (breaks && !columns_->page_empty()) {
    break_ahead_ = true;
    return Outcome::kPageFull;
  }
  // Only where a page ends of itself is the space above the next paragraph left out.
  const bool authors_page = std::exchange(break_ahead_, false) || breaks || strip->begin == 0;
  if (authors_page && columns_->page_empty()) columns_->LeaveSpaceAbove(*strip);
  const bool together = front.block.keep_together || front.block.keep_with_next;
  if (!columns_->column_empty() && together && !front.started && WantsNextColumn(columns_->Left()))
    return Outcome::kColumnFull;
  if (!columns_->column_empty() && LeavesLineAlone()) return Outcome::kColumnFull;
  // What only holds a frame or a table that floats.
  if (!columns_->column_empty() && strip->height <= 0 && columns_->FloatsOffEnd(*strip))
    return Outcome::kColumnFull;

  const double top = columns_->FindTop(strip.get());
  const double available_height = columns_->bottom() - top;
  Strips notes = NotesIn(*strip);
  double notes_height = 0;
  if (!notes.empty() && columns_->foot_empty())
    notes_height = HeightOf(*NoteSeparator(notes.front()->begin));
  for (const auto& line : notes) notes_height += HeightOf(*line);
  // Long notes begin below their mark and go on on the next page, as all notes do that are too long
  // for a page of their own.
  if (notes_height > columns_->ColumnHeight() * kNoteShare)
    notes_height = HeightOf(*NoteSeparator(0)) + HeightOf(*notes.front());
  if (columns_->column_empty() && strip->height <= available_height + kSlack) notes_height = 0;
  const auto place_notes = [&](Strips lines) {
    const bool others_wait = !waiting_notes_.empty();
    for (auto& line : lines) waiting_notes_.push_back(std::move(line));
    if (!others_wait) FillFoot(columns_->Left());
  };
  if (strip->height + notes_height <= available_height + kSlack) {
    columns_->Place(strip, top, !front.started);
    place_notes(std::move(notes));
    DropStrip();
    return Outcome::kPlaced;
  }
  if (columns_->column_empty() || strip->height > columns_->ColumnHeight() * kWholeRowShare) {
    const bool begins = !std::exchange(pending_.front().started, true);
    if (auto part = strip->TakeTop(available_height)) {
      columns_->Place(part, top, begins);
      place_notes(NotesIn(*part));
      return Outcome::kColumnFull;
    }
  }
  if (!columns_->column_empty() || !columns_->column_is_whole()) {
    columns_->GiveBack(strip.get(), top);
    return Outcome::kColumnFull;
  }
  columns_->PlaceSmaller(strip, top);
  place_notes(std::move(notes));
  DropStrip();
  return Outcome::kColumnFull;
}

}  // namespace tenora::printing
