#include "platform/printing/layout/note_marks.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/printing/document_length.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/notes.h"
#include "platform/richtext/page_heads.h"

namespace tenora::printing {
namespace {

using richtext::Bullet;
using richtext::Paragraph;

constexpr std::size_t kLongestMark = 4;  // of an author's, bytes; a longer one is a word

// The numbers of one kind of notes. `kind` begins the control words that describe them.
class Numbering {
 public:
  Numbering(const richtext::PageSetup& page, const std::string& kind) {
    static constexpr std::array<std::pair<const char*, Bullet::Kind>, 4> kStyles{
        {{"nalc", Bullet::Kind::kLowerLetter},
         {"nauc", Bullet::Kind::kUpperLetter},
         {"nrlc", Bullet::Kind::kLowerRoman},
         {"nruc", Bullet::Kind::kUpperRoman}}};
    next_ = richtext::PageWord(page, kind + "start").value_or(1);
    for (const auto& [word, style] : kStyles) {
      if (richtext::PageWord(page, kind + word)) style_ = style;
    }
  }
  std::string Next() { return richtext::FormatNumber(style_, next_++); }

 private:
  Bullet::Kind style_ = Bullet::Kind::kDecimal;
  int next_ = 1;
};

// Calls `use` with every run and its position.
template <typename Use>
void ForEachRun(const Paragraph& paragraph, int position, const Use& use) {
  for (const richtext::Run& run : paragraph.runs) {
    use(run, position);
    const bool text = std::holds_alternative<std::monostate>(run.object);
    position += text ? TextUnits(run.text) : 1;
  }
}

// The positions of the automatic marks in a note's text.
std::vector<int> MarksIn(const std::vector<richtext::Block>& blocks, int position) {
  std::vector<int> found;
  richtext::ForEachParagraph(blocks, [&](const Paragraph& paragraph, auto) {
    ForEachRun(paragraph, position, [&](const richtext::Run& run, int at) {
      if (richtext::IsNoteMark(run)) found.push_back(at);
    });
    position += Length(paragraph);
  });
  return found;
}

// Of a note's text, its first paragraph; null where a table begins it.
const Paragraph* FirstParagraph(const std::vector<richtext::Block>& blocks) {
  return blocks.empty() ? nullptr : std::get_if<Paragraph>(&blocks.front());
}

// Of the number before the note's text.
richtext::CharFormat LeadFormat(const Note& note, const richtext::CharFormat& anchor) {
  const Paragraph* const first = FirstParagraph(*note.blocks);
  if (first == nullptr) return anchor;
  return first->runs.empty() ? first->mark : first->runs.front().format;
}

// Whether the text before a note ends with a mark that the author gave to it: raised, or what the
// note itself begins with.
bool HasAuthorsMark(const richtext::Run* before, const Note& note) {
  if (before == nullptr || before->text.empty()) return false;
  const char last = before->text.back();
  if (last == ' ' || last == '\t' || last == '\v') return false;
  if (before->format.script == richtext::Script::kSuper || before->format.raise_half_points > 0)
    return true;
  const Paragraph* const first = FirstParagraph(*note.blocks);
  if (first == nullptr || first->runs.empty()) return false;
  const std::string& text = first->runs.front().text;
  const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  const std::string mark = text.substr(begin, text.find_first_of(" \t\v", begin) - begin);
  return !mark.empty() && mark.size() <= kLongestMark && before->text.ends_with(mark);
}

}  // namespace

Notes::Notes(const richtext::Document& document) {
  int position = 0;
  for (const richtext::Block& block : document.blocks) position += Length(block);
  const int text_end = position;
  position = 0;
  richtext::ForEachParagraph(document.blocks, [&](const Paragraph& paragraph, auto) {
    ForEachRun(paragraph, position, [&](const richtext::Run& run, int at) {
      const auto* const blocks = richtext::BlocksOfNote(run);
      if (blocks == nullptr || run.format.hidden) return;
      (richtext::IsEndnote(run) ? endnotes_ : footnotes_).push_back({blocks, at, 0});
    });
    position += Length(paragraph);
  });
  if (footnotes_.empty() && endnotes_.empty()) return;
  position = text_end;
  for (std::vector<Note>* const notes : {&endnotes_, &footnotes_}) {
    for (Note& note : *notes) {
      note.position = position;
      for (const richtext::Block& block : *note.blocks) position += Length(block);
    }
  }
  Number(document);
}

// The automatic mark before a note in its paragraph is the note's.
void Notes::Number(const richtext::Document& document) {
  Numbering foot(document.page, "ftn"), end(document.page, "aftn");
  auto footnote = footnotes_.begin(), endnote = endnotes_.begin();
  int position = 0;
  richtext::ForEachParagraph(document.blocks, [&](const Paragraph& paragraph, auto) {
    std::vector<int> waiting;
    const richtext::Run* before = nullptr;
    ForEachRun(paragraph, position, [&](const richtext::Run& run, int at) {
      if (richtext::IsNoteMark(run)) waiting.push_back(at);
      const bool at_end = endnote != endnotes_.end() && endnote->anchor == at;
      const richtext::Run* const last = std::exchange(before, &run);
      if (!at_end && (footnote == footnotes_.end() || footnote->anchor != at)) return;
      const Note& note = at_end ? *endnote++ : *footnote++;
      const std::vector<int> inside = MarksIn(*note.blocks, note.position);
      if (waiting.empty() && inside.empty() && HasAuthorsMark(last, note)) return;
      const std::string mark = at_end ? end.Next() : foot.Next();
      if (waiting.empty()) {
        ShownMark& shown = added_[at] = {mark, run.format};
        shown.format.script = richtext::Script::kSuper;
      }
      if (inside.empty()) leads_[note.position] = {mark, LeadFormat(note, run.format)};
      for (const std::vector<int>* const marks : {&std::as_const(waiting), &inside}) {
        for (const int place : *marks) marks_[place] = mark;
      }
      waiting.clear();
    });
    position += Length(paragraph);
  });
}

std::string Notes::MarkAt(int position) const {
  const auto found = marks_.find(position);
  return found == marks_.end() ? std::string() : found->second;
}

}  // namespace tenora::printing
