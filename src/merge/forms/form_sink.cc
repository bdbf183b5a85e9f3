#include "merge/forms/form_sink.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tenora {
namespace {

using richtext::Block;
using richtext::Paragraph;
using richtext::Run;
using richtext::Table;

Paragraph EmptyLike(const Paragraph& from) {
  Paragraph paragraph;
  paragraph.format = from.format;
  paragraph.format.bullet = {};
  paragraph.mark = from.mark;
  return paragraph;
}

}  // namespace

void FormSink::Add(Run run, bool content) {
  if (run.text.empty()) {
    line_content_ = line_content_ || content;
    content_ = content_ || content;
    return;
  }
  length_ += run.text.size();
  line_content_ = line_content_ || content;
  content_ = content_ || content;
  current_.runs.push_back(std::move(run));
}

void FormSink::AddMark(richtext::Mark mark) {
  mark.offset = length_;
  current_.marks.push_back(std::move(mark));
}

void FormSink::DropLine() {
  while (current_.runs.size() > line_begin_) {
    length_ -= current_.runs.back().text.size();
    current_.runs.pop_back();
  }
  for (richtext::Mark& mark : current_.marks) mark.offset = std::min(mark.offset, length_);
}

void FormSink::EndLine(const Run& line_break, bool marked) {
  if (marked && LineIsEmpty()) return DropLine();
  Add({line_break.format, "\v", {}, line_break.field}, true);
  line_begin_ = current_.runs.size();
  line_content_ = false;
}

void FormSink::Finish(const Paragraph& from) {
  current_.format = from.format;
  current_.mark = from.mark;
  blocks_.emplace_back(std::exchange(current_, {}));
  length_ = line_begin_ = 0;
  line_content_ = content_ = false;
  from_ = nullptr;
}

// The marks stay, at the beginning of what comes next.
void FormSink::DropText() {
  line_begin_ = 0;
  DropLine();
  from_ = nullptr;
}

void FormSink::EndParagraph(const Paragraph& from, bool marked, bool paragraph_marked) {
  if (paragraph_marked && !content_) {
    DropText();
    if (from.next_section != nullptr) EndSection(from);
    return;
  }
  if (marked && LineIsEmpty() && line_begin_ > 0) {
    // The last line of several: the break before it goes with it.
    --line_begin_;
    DropLine();
  }
  // The end may be that of a paragraph of nothing but a marker, in which nothing began.
  Finish(from_ != nullptr ? *from_ : from);
  std::get<Paragraph>(blocks_.back()).next_section = from.next_section;
}

void FormSink::EndSection(const Paragraph& from) {
  Flush();
  Paragraph* last = blocks_.empty() ? nullptr : std::get_if<Paragraph>(&blocks_.back());
  if (last == nullptr || last->next_section != nullptr) {
    blocks_.emplace_back(EmptyLike(from));
    last = &std::get<Paragraph>(blocks_.back());
  }
  last->next_section = from.next_section;
}

// Text whose paragraph's end was taken out ends where something else begins.
void FormSink::Flush() {
  if (content_ && from_ != nullptr) return Finish(*from_);
  DropText();
}

void FormSink::AddTable(Table table) {
  if (table.rows.empty()) return;
  Flush();
  auto* const last =
      blocks_.empty() ? nullptr : std::get_if<std::shared_ptr<Table>>(&blocks_.back());
  if (last != nullptr) {
    std::ranges::move(table.rows, std::back_inserter((*last)->rows));
    return;
  }
  blocks_.emplace_back(std::make_shared<Table>(std::move(table)));
}

std::vector<Block> FormSink::Take(const Paragraph& like) {
  Flush();
  std::vector<richtext::Mark> marks = std::exchange(current_.marks, {});
  if (blocks_.empty() || !std::holds_alternative<Paragraph>(blocks_.back())) {
    blocks_.emplace_back(EmptyLike(like));
  }
  auto& last = std::get<Paragraph>(blocks_.back());
  std::size_t length = 0;
  for (const Run& run : last.runs) length += run.text.size();
  for (richtext::Mark& mark : marks) {
    mark.offset = length;
    last.marks.push_back(std::move(mark));
  }
  return std::exchange(blocks_, {});
}

}  // namespace tenora
