#include "output/html/shown_text.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "output/html/link_target.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/notes.h"
#include "platform/richtext/symbol_characters.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

using Kind = ShownPiece::Kind;
using richtext::SymbolFont;

std::string WithUnicodeSymbols(std::string_view text, SymbolFont font) {
  std::string shown;
  while (!text.empty()) AppendUtf8(shown, richtext::UnicodeSymbol(font, TakeCodePoint(text)));
  return shown;
}

// A tab or the end of a line.
bool IsControl(char c) { return c >= '\t' && c <= '\r'; }

void MakeMark(ShownPiece* piece) {
  if (piece->kind == Kind::kText && piece->format->script == richtext::Script::kSuper &&
      piece->text.find_first_not_of(' ') != std::string_view::npos)
    piece->kind = Kind::kNoteMark;
}

}  // namespace

ShownText::ShownText(const DocumentParts& parts, const richtext::Paragraph& paragraph)
    : parts_(parts) {
  pieces_.reserve(paragraph.runs.size() + 1);
  if (const auto* const mark = parts.note_list.AddedAhead(paragraph))
    AddMark(mark->text, mark->format);
  for (const richtext::Run& run : paragraph.runs) {
    if (!run.format.hidden) Add(run, &run == &paragraph.runs.back());
  }
}

bool ShownText::HasTabs() const {
  return std::ranges::any_of(pieces_, [](const auto& piece) { return piece.kind == Kind::kTab; });
}

void ShownText::Add(const richtext::Run& run, bool last) {
  if (run.field.get() != linked_) {
    linked_ = run.field.get();
    link_ = linked_ == nullptr ? std::string_view() : Keep(LinkTarget(linked_));
  }
  if (const auto* picture = std::get_if<std::shared_ptr<const richtext::Picture>>(&run.object))
    return AddPicture(run.format, **picture, (*picture)->width, (*picture)->height);
  if (const auto* object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object))
    return Add(run, **object, last);
  const bool first = pieces_.empty();
  AddText(run.format, run.text);
  // Raised text that begins a paragraph is the mark of a note.
  if (first && pieces_.size() == 1) MakeMark(&pieces_.front());
}

void ShownText::Add(const richtext::Run& run, const richtext::Verbatim& object, bool last) {
  if (richtext::IsNoteMark(run)) return AddMark(parts_.note_list.MarkOf(run), run.format);
  if (richtext::BlocksOfNote(run) != nullptr) {
    if (const auto* const mark = parts_.note_list.AddedFor(run)) {
      AddMark(mark->text, mark->format);
    } else if (!pieces_.empty()) {
      MakeMark(&pieces_.back());  // the author's own
    }
    return;
  }
  if (richtext::IsColumnBreak(run)) {
    pieces_.push_back({.kind = Kind::kPageBreak, .format = &run.format, .link = link_});
    return;
  }
  if (object.shape && !object.figures.empty()) {
    for (const auto& figure : object.figures) {
      if (figure->picture)
        AddPicture(run.format, *figure->picture, figure->right - figure->left,
                   figure->bottom - figure->top);
    }
    return;
  }
  if (object.shown_picture)
    return AddPicture(run.format, *object.shown_picture, object.shown_picture->width,
                      object.shown_picture->height);
  if (object.shown_text.empty()) return;
  if (object.source.starts_with("{\\field")) return AddText(run.format, object.shown_text);
  // What an object shows is no part of the text it is anchored in: it stands apart, as on paper.
  if (!pieces_.empty() && pieces_.back().kind == Kind::kText && !pieces_.back().text.ends_with(' '))
    AddText(run.format, " ");
  AddText(run.format, object.shown_text);
  if (!last) pieces_.push_back({.kind = Kind::kLineBreak, .format = &run.format, .link = link_});
}

void ShownText::AddMark(std::string_view mark, const richtext::CharFormat& format) {
  if (mark.empty()) return;
  richtext::CharFormat& raised = kept_formats_.emplace_front(format);
  raised.script = richtext::Script::kSuper;
  raised.raise_half_points = 0;
  pieces_.push_back({.kind = Kind::kNoteMark, .format = &raised, .text = mark, .link = link_});
}

void ShownText::AddText(const richtext::CharFormat& format, std::string_view text) {
  const auto font = static_cast<std::size_t>(std::max(format.font, 0));
  const std::vector<richtext::Font>& fonts = parts_.document.fonts;
  const SymbolFont symbols =
      font < fonts.size() ? richtext::SymbolFontOf(fonts[font].name) : SymbolFont::kNone;
  while (!text.empty()) {
    const auto size =
        static_cast<std::size_t>(std::ranges::find_if(text, IsControl) - text.begin());
    if (size > 0) {
      std::string_view shown = text.substr(0, size);
      if (symbols != SymbolFont::kNone) shown = Keep(WithUnicodeSymbols(shown, symbols));
      pieces_.push_back({.format = &format, .text = shown, .link = link_});
    } else {
      const char c = text.front();
      const Kind kind = c == '\t' ? Kind::kTab : c == '\f' ? Kind::kPageBreak : Kind::kLineBreak;
      pieces_.push_back({.kind = kind, .format = &format, .link = link_});
    }
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
}

void ShownText::AddPicture(const richtext::CharFormat& format, const richtext::Picture& picture,
                           int width, int height) {
  pieces_.push_back({.kind = Kind::kPicture,
                     .format = &format,
                     .picture = &picture,
                     .width = width,
                     .height = height,
                     .link = link_});
}

std::string_view ShownText::Keep(std::string text) { return kept_.emplace_front(std::move(text)); }

}  // namespace tenora::html
