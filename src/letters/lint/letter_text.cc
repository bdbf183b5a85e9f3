#include "letters/lint/letter_text.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/richtext/carried_text.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/source_head.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using richtext::Document;
using richtext::Paragraph;
using richtext::ParagraphEnd;

constexpr int kInHead = -1;
constexpr int kNoHead = -1;

int PositionsIn(std::string_view text) { return static_cast<int>(ToUtf16(text).size()); }

std::string_view PlaceOf(std::string_view word) {
  if (word.starts_with("header")) return "header";
  if (word.starts_with("footer")) return "footer";
  if (word == "footnote") return "footnote";
  if (word == "annotation") return "comment";
  if (word == "fldinst") return "field";
  return "text box";
}

// A bracket, also in a word processor's typographic form, or any character beyond ASCII.
bool MayHoldCodes(std::string_view source) {
  return source.find_first_of('<') != std::string_view::npos ||
         source.find("\\'") != std::string_view::npos ||
         source.find("\\u") != std::string_view::npos ||
         source.find("MERGEFIELD") != std::string_view::npos;
}

class Collector {
 public:
  explicit Collector(const RichTextBox& letter) : letter_(letter) {
    const std::string& source = letter.TextRTF();
    head_ = source.substr(0, richtext::ReadHead(source).length);
  }

  std::vector<LetterText> Take() {
    Add(letter_.Document(), "", 0);
    return std::move(texts_);
  }

 private:
  // Text from elsewhere that is anchored in the text being collected.
  struct Carried {
    std::string source;
    int position;
  };

  void Add(const Document& document, std::string_view place, int position, int head = kNoHead) {
    int number = 0;
    for (const richtext::HeadGroup* group : richtext::HeadGroupsOf(document))
      AddCarried(group->source, kInHead, place.empty() ? number++ : kNoHead);
    LetterText text;
    text.place = place;
    text.head = head;
    text.position = position;
    std::vector<Carried> carried;
    int line = 1;
    text.lines.push_back({0, line});
    int reached = position;
    richtext::ForEachParagraph(document.blocks, [&](const Paragraph& paragraph, ParagraphEnd end) {
      const std::size_t begin = text.text.size();
      AddRuns(paragraph, &line, &text);
      Anchored(paragraph, place.empty(), reached, &carried);
      text.text += '\n';
      if (place.empty()) reached += PositionsIn(std::string_view(text.text).substr(begin));
      if (end != ParagraphEnd::kCell) ++line;
      text.lines.push_back({text.text.size(), line});
    });
    texts_.push_back(std::move(text));
    for (const Carried& one : carried) AddCarried(one.source, one.position);
  }

  static void AddRuns(const Paragraph& paragraph, int* line, LetterText* text) {
    for (const richtext::Run& run : paragraph.runs) {
      text->spans.push_back({text->text.size(), run.format, run.field, run.object.index() != 0});
      for (const char c : run.text) {
        text->text += c == '\v' ? '\n' : c;
        if (c == '\v') text->lines.push_back({text->text.size(), ++*line});
      }
    }
  }

  // Fields are taken once, however many runs their result has. What is anchored in carried text has
  // the position of that.
  void Anchored(const Paragraph& paragraph, bool in_letter, int position,
                std::vector<Carried>* carried) {
    for (const richtext::Mark& mark : paragraph.marks) {
      carried->push_back({mark.source, position});
    }
    for (const richtext::Run& run : paragraph.runs) {
      if (run.field != nullptr && fields_.insert(run.field.get()).second) {
        carried->push_back({"{\\*\\fldinst{" + run.field->instruction + "}}", position});
      }
      using Object = std::shared_ptr<const richtext::Verbatim>;
      if (const auto* object = std::get_if<Object>(&run.object)) {
        carried->push_back({(*object)->source, position});
      }
      if (in_letter) position += PositionsIn(run.text);
    }
  }

  // Finds the texts in carried source. A nested text is found when the outer one is read.
  void AddCarried(std::string_view source, int position, int head = kNoHead) {
    if (!MayHoldCodes(source)) return;
    for (const richtext::CarriedText& text : richtext::CarriedTexts(source))
      AddText(PlaceOf(text.word), text.content, position, head);
  }

  void AddText(std::string_view place, std::string_view content, int position, int head) {
    if (!MayHoldCodes(content)) return;
    Add(richtext::ReadRtf(head_ + std::string(content) + "}"), place, position, head);
  }

  const RichTextBox& letter_;
  std::string head_;  // of the letter, so that the fonts of carried text stay apart
  std::vector<LetterText> texts_;
  std::set<const richtext::Field*> fields_;
};

}  // namespace

std::size_t LetterText::LineAt(std::size_t offset) const {
  const auto next = std::ranges::upper_bound(lines, offset, {}, &Line::begin);
  return static_cast<std::size_t>(next - lines.begin()) - 1;
}

std::string LetterText::TextOfLine(std::size_t line) const {
  const std::size_t begin = lines[line].begin;
  std::string shown = text.substr(begin, text.find('\n', begin) - begin);
  std::ranges::replace_if(
      shown, [](char c) { return c >= 0 && c < ' '; }, ' ');
  return shown;
}

std::vector<const TextSpan*> LetterText::SpansOf(std::size_t begin, std::size_t end) const {
  auto span = std::ranges::upper_bound(spans, begin, {}, &TextSpan::begin);
  if (span != spans.begin()) --span;
  std::vector<const TextSpan*> held;
  for (; span != spans.end() && span->begin < end; ++span) held.push_back(&*span);
  return held;
}

std::vector<LetterText> TextsOf(const RichTextBox& letter) { return Collector(letter).Take(); }

}  // namespace tenora
