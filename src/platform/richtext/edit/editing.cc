#include "platform/richtext/editing.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/document_text.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr int kNewDocumentLanguage = 5129;  // English (New Zealand)

// UTF-16 units of valid UTF-8.
int Units(std::string_view text) {
  int units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    units += (byte & 0xc0) == 0x80 ? 0 : byte >= 0xf0 ? 2 : 1;
  }
  return units;
}

// Byte offset of a position; one between the halves of a pair is moved before it.
std::size_t ByteOffset(std::string_view text, int units) {
  std::string_view rest = text;
  while (!rest.empty()) {
    std::string_view next = rest;
    TakeCodePoint(next);
    units -= Units(rest.substr(0, rest.size() - next.size()));
    if (units < 0) break;
    rest = next;
  }
  return text.size() - rest.size();
}

// Text as a document may hold it, cut at line ends.
std::vector<std::string> Paragraphs(std::string_view text) {
  std::vector<std::string> paragraphs(1);
  while (!text.empty()) {
    const char32_t character = TakeCodePoint(text);
    if (character == '\r' || character == '\n') {
      if (character == '\r' && text.starts_with('\n')) text.remove_prefix(1);
      paragraphs.emplace_back();
    } else if (const char32_t clean = CleanCharacter(character)) {
      AppendUtf8(paragraphs.back(), clean);
    }
  }
  return paragraphs;
}

void Join(std::vector<Run>* runs, Run run) {
  if (run.text.empty()) return;
  Run* last = runs->empty() ? nullptr : &runs->back();
  if (last != nullptr && last->object.index() == 0 && run.object.index() == 0 &&
      last->format == run.format && last->field == run.field)
    last->text += run.text;
  else
    runs->push_back(std::move(run));
}

// The part of a paragraph between two byte offsets, in a paragraph of the same format.
Paragraph Part(const Paragraph& paragraph, std::size_t from, std::size_t to) {
  Paragraph part;
  part.format = paragraph.format;
  part.mark = paragraph.mark;
  std::size_t start = 0;
  for (const Run& run : paragraph.runs) {
    const std::size_t end = start + run.text.size();
    if (end > from && start < to) {
      Run piece = run;
      const std::size_t first = std::max(from, start) - start;
      piece.text = run.text.substr(first, std::min(to, end) - start - first);
      Join(&part.runs, std::move(piece));
    }
    start = end;
  }
  return part;
}

void Append(Paragraph* paragraph, const Paragraph& tail) {
  const std::size_t length = ParagraphText(*paragraph).size();
  for (const Run& run : tail.runs) Join(&paragraph->runs, run);
  for (const Mark& mark : tail.marks)
    paragraph->marks.push_back({mark.offset + length, mark.source});
}

// The run whose format text put in at a byte offset takes: the first of a selection, else the one
// before the caret.
Run RunAt(const Paragraph& paragraph, std::size_t offset, bool selection) {
  Run found{paragraph.mark, {}, {}, nullptr};
  if (!paragraph.runs.empty()) found.format = paragraph.runs.front().format;
  std::size_t start = 0;
  for (const Run& run : paragraph.runs) {
    if (start < offset || (selection && start == offset)) {
      found.format = run.format;
      const bool inside = start + run.text.size() > offset || selection;
      found.field = inside ? run.field : nullptr;
    }
    start += run.text.size();
  }
  return found;
}

struct Place {
  Paragraph* paragraph = nullptr;
  std::vector<Block>* container = nullptr;
  std::size_t index = 0;   // in the container
  std::size_t offset = 0;  // bytes
};

// Finds paragraphs by position and clears ranges of a document.
class Editor {
 public:
  explicit Editor(Document* document) { Collect(&document->blocks); }

  int length() const { return length_ - 1; }

  Place Find(int position) const {
    for (const Entry& entry : entries_) {
      if (position > entry.start + entry.units) continue;
      const std::string text = ParagraphText(*entry.place.paragraph);
      Place place = entry.place;
      place.offset = ByteOffset(text, position - entry.start);
      return place;
    }
    Place last = entries_.back().place;
    last.offset = ParagraphText(*last.paragraph).size();
    return last;
  }

  // Empties the paragraphs strictly between two places.
  void ClearBetween(const Place& from, const Place& to) const {
    bool inside = false;
    for (const Entry& entry : entries_) {
      if (entry.place.paragraph == to.paragraph) return;
      if (inside) {
        entry.place.paragraph->runs.clear();
        entry.place.paragraph->marks.clear();
      }
      if (entry.place.paragraph == from.paragraph) inside = true;
    }
  }

 private:
  struct Entry {
    Place place;
    int start = 0, units = 0;
  };

  void Collect(std::vector<Block>* blocks) {
    for (std::size_t i = 0; i < blocks->size(); ++i) {
      if (auto* paragraph = std::get_if<Paragraph>(&(*blocks)[i])) {
        const int units = Units(ParagraphText(*paragraph));
        entries_.push_back({{paragraph, blocks, i, 0}, length_, units});
        length_ += units + 1;
        continue;
      }
      for (Row& row : std::get<std::shared_ptr<Table>>((*blocks)[i])->rows) {
        for (Cell& cell : row.cells) Collect(&cell.blocks);
      }
    }
  }

  std::vector<Entry> entries_;
  int length_ = 0;
};

// Removes the text between two places; what is left around it is one paragraph where both are in
// one container with no table between them.
Paragraph CutOut(const Editor& editor, const Place& from, const Place& to) {
  const std::size_t end = ParagraphText(*to.paragraph).size();
  Paragraph tail = Part(*to.paragraph, to.offset, end);
  tail.next_section = to.paragraph->next_section;
  for (const Mark& mark : to.paragraph->marks) {
    if (mark.offset >= to.offset) tail.marks.push_back({mark.offset - to.offset, mark.source});
  }
  Paragraph head = Part(*from.paragraph, 0, from.offset);
  for (const Mark& mark : from.paragraph->marks) {
    if (mark.offset < from.offset || (from.offset == 0 && mark.offset == 0 && tail.marks.empty()))
      head.marks.push_back(mark);
  }
  editor.ClearBetween(from, to);
  const bool one_container = from.container == to.container;
  const auto first = from.container->begin() + static_cast<std::ptrdiff_t>(from.index);
  const auto last = from.container->begin() + static_cast<std::ptrdiff_t>(to.index);
  const bool joins = one_container && std::all_of(first, last + 1, [](const Block& block) {
                       return std::holds_alternative<Paragraph>(block);
                     });
  *from.paragraph = std::move(head);
  if (joins) {
    from.container->erase(first + 1, last + 1);
    return tail;
  }
  *to.paragraph = std::move(tail);
  Paragraph none;
  none.mark = from.paragraph->mark;
  return none;
}

}  // namespace

Document DocumentOfText(std::string_view utf8) {
  Document document;
  document.default_language = kNewDocumentLanguage;
  document.colours.push_back({.automatic = true});
  Font font;
  font.name = "Arial";
  document.fonts.push_back(std::move(font));
  for (std::string& text : Paragraphs(utf8)) {
    Paragraph paragraph;
    if (!text.empty()) paragraph.runs.push_back({CharFormat(), std::move(text), {}, nullptr});
    document.blocks.emplace_back(std::move(paragraph));
  }
  return document;
}

int ReplaceRange(Document* document, int start, int length, std::string_view utf8) {
  const Editor editor(document);
  start = std::clamp(start, 0, editor.length());
  length = std::clamp(length, 0, editor.length() - start);
  const Place from = editor.Find(start), to = editor.Find(start + length);
  const Run model = RunAt(*from.paragraph, from.offset, length > 0);
  Paragraph tail = CutOut(editor, from, to);

  std::vector<std::string> texts = Paragraphs(utf8);
  int end = start + static_cast<int>(texts.size()) - 1;
  auto& first = std::get<Paragraph>((*from.container)[from.index]);
  std::vector<Block> added;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    end += Units(texts[i]);
    if (i > 0) {
      Paragraph next;
      next.format = first.format;
      next.mark = model.format;
      added.emplace_back(std::move(next));
    }
    Run run = model;
    run.text = std::move(texts[i]);
    Join(i == 0 ? &first.runs : &std::get<Paragraph>(added.back()).runs, std::move(run));
  }
  Paragraph& last = added.empty() ? first : std::get<Paragraph>(added.back());
  last.mark = tail.mark;
  last.next_section = tail.next_section;
  Append(&last, tail);
  from.container->insert(from.container->begin() + static_cast<std::ptrdiff_t>(from.index) + 1,
                         std::make_move_iterator(added.begin()),
                         std::make_move_iterator(added.end()));
  return end;
}

int ReplaceRangeByObject(Document* document, int start, int length, const Document& from) {
  Run object;
  ForEachParagraph(from.blocks, [&](const Paragraph& paragraph, ParagraphEnd) {
    for (const Run& run : paragraph.runs) {
      if (object.object.index() == 0 && run.object.index() != 0) object = run;
    }
  });
  if (object.object.index() == 0) return -1;
  const int caret = ReplaceRange(document, start, length, "");
  const Place place = Editor(document).Find(caret);
  const Run model = RunAt(*place.paragraph, place.offset, false);
  object.format = model.format;
  object.field = model.field;
  const std::size_t end = ParagraphText(*place.paragraph).size();
  Paragraph joined = Part(*place.paragraph, 0, place.offset);
  const Paragraph tail = Part(*place.paragraph, place.offset, end);
  const std::size_t added = object.text.size();
  Join(&joined.runs, std::move(object));
  for (const Run& run : tail.runs) Join(&joined.runs, run);
  joined.marks = place.paragraph->marks;
  joined.next_section = place.paragraph->next_section;
  for (Mark& mark : joined.marks) {
    if (mark.offset >= place.offset) mark.offset += added;
  }
  *place.paragraph = std::move(joined);
  return caret + 1;
}

}  // namespace tenora::richtext
