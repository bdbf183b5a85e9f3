#include "platform/richtext/note_list.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/richtext/document_text.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/notes.h"
#include "platform/richtext/page_heads.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kLongestMark = 4;  // of an author's, bytes; a longer one is a word

// `kind` begins the control words that describe notes of a kind.
Bullet::Kind StyleOf(const PageSetup& page, const std::string& kind) {
  static constexpr std::pair<const char*, Bullet::Kind> kStyles[] = {
      {"nalc", Bullet::Kind::kLowerLetter},
      {"nauc", Bullet::Kind::kUpperLetter},
      {"nrlc", Bullet::Kind::kLowerRoman},
      {"nruc", Bullet::Kind::kUpperRoman}};
  for (const auto& [word, style] : kStyles) {
    if (PageWord(page, kind + word)) return style;
  }
  return Bullet::Kind::kDecimal;
}

const Verbatim* ObjectOf(const Run& run) {
  const auto* const object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object);
  return object == nullptr ? nullptr : object->get();
}

// The automatic marks in a note's own text.
std::vector<const Verbatim*> MarksIn(const std::vector<Block>& blocks) {
  std::vector<const Verbatim*> marks;
  ForEachParagraph(blocks, [&](const Paragraph& paragraph, auto) {
    for (const Run& run : paragraph.runs) {
      if (IsNoteMark(run)) marks.push_back(ObjectOf(run));
    }
  });
  return marks;
}

// Of a note's text, its first paragraph; null where a table begins it.
const Paragraph* FirstParagraph(const std::vector<Block>& blocks) {
  return blocks.empty() ? nullptr : std::get_if<Paragraph>(&blocks.front());
}

// Whether the text before a note ends with a mark that the author gave to it: raised, or what the
// note itself begins with.
bool HasAuthorsMark(const Run* before, const std::vector<Block>& note) {
  if (before == nullptr || before->text.empty()) return false;
  const char last = before->text.back();
  if (last == ' ' || last == '\t' || last == '\v') return false;
  if (before->format.script == Script::kSuper || before->format.raise_half_points > 0) return true;
  const Paragraph* const first = FirstParagraph(note);
  if (first == nullptr || first->runs.empty()) return false;
  const std::string& text = first->runs.front().text;
  const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  const std::string mark = text.substr(begin, text.find_first_of(" \t\v", begin) - begin);
  return !mark.empty() && mark.size() <= kLongestMark && before->text.ends_with(mark);
}

}  // namespace

NoteList::NoteList(const PageSetup& page)
    : foot_(NumbersOf(page, "ftn")), end_(NumbersOf(page, "aftn")) {}

NoteList::Numbers NoteList::NumbersOf(const PageSetup& page, const std::string& kind) {
  const int start = PageWord(page, kind + "start").value_or(1);
  return {StyleOf(page, kind), start, start, PageWord(page, kind + "restart").has_value()};
}

void NoteList::Add(std::span<const Block> blocks) {
  for (const Block& block : blocks) {
    if (const auto* const paragraph = std::get_if<Paragraph>(&block)) {
      Add(*paragraph);
      continue;
    }
    for (const Row& row : std::get<std::shared_ptr<Table>>(block)->rows) {
      for (const Cell& cell : row.cells) Add(cell.blocks);
    }
  }
}

void NoteList::Add(const Paragraph& paragraph) {
  std::vector<const Verbatim*> waiting;
  const Run* before = nullptr;
  for (const Run& run : paragraph.runs) {
    const Run* const last = std::exchange(before, &run);
    const Verbatim* const object = ObjectOf(run);
    if (object == nullptr || run.format.hidden) continue;
    if (IsNoteMark(run)) {
      waiting.push_back(object);
    } else if (const Note note = BlocksOfNote(run)) {
      AddNote(run, note, last, &waiting);
    } else {
      for (const auto& figure : object->figures) Add(figure->blocks);
    }
  }
  if (paragraph.next_section == nullptr) return;
  for (Numbers* const numbers : {&foot_, &end_}) {
    if (numbers->restarts) numbers->next = numbers->start;
  }
}

// The automatic marks before a note in its paragraph are the note's.
void NoteList::AddNote(const Run& run, Note note, const Run* before,
                       std::vector<const Verbatim*>* waiting) {
  const bool at_end = IsEndnote(run);
  (at_end ? endnotes_ : footnotes_).push_back(note);
  const std::vector<const Verbatim*> inside = MarksIn(*note);
  if (!waiting->empty() || !inside.empty() || !HasAuthorsMark(before, *note)) {
    Numbers& numbers = at_end ? end_ : foot_;
    const std::string mark = FormatNumber(numbers.style, numbers.next++);
    if (waiting->empty()) {
      AddedMark& added = added_[ObjectOf(run)] = {mark, run.format};
      added.format.script = Script::kSuper;
    }
    const Paragraph* const first = FirstParagraph(*note);
    if (inside.empty() && first != nullptr) {
      const CharFormat& format = first->runs.empty() ? first->mark : first->runs.front().format;
      added_ahead_[first] = {mark, format};
    }
    for (const auto* const places : {&std::as_const(*waiting), &inside}) {
      for (const Verbatim* const place : *places) marks_[place] = mark;
    }
    waiting->clear();
  }
  Add(*note);
}

std::string_view NoteList::MarkOf(const Run& run) const {
  const auto found = marks_.find(ObjectOf(run));
  return found == marks_.end() ? std::string_view() : found->second;
}

const NoteList::AddedMark* NoteList::AddedFor(const Run& run) const {
  const auto found = added_.find(ObjectOf(run));
  return found == added_.end() ? nullptr : &found->second;
}

const NoteList::AddedMark* NoteList::AddedAhead(const Paragraph& paragraph) const {
  const auto found = added_ahead_.find(&paragraph);
  return found == added_ahead_.end() ? nullptr : &found->second;
}

}  // namespace tenora::richtext
