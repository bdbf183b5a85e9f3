#include "output/html/shown_text.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "output/html/link_target.h"
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

}  // namespace

ShownText::ShownText(const richtext::Document& document, const richtext::Paragraph& paragraph)
    : document_(document) {
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
    return AddPicture(run.format, **picture);
  const auto* object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
  if (object == nullptr) return AddText(run.format, run.text);
  if ((*object)->shown_picture) return AddPicture(run.format, *(*object)->shown_picture);
  if ((*object)->shown_text.empty()) return;
  // A text box is no part of the text it is anchored in: it stands apart, as it does on paper.
  if (!pieces_.empty() && pieces_.back().kind == Kind::kText && !pieces_.back().text.ends_with(' '))
    AddText(run.format, " ");
  AddText(run.format, (*object)->shown_text);
  if (!last) pieces_.push_back({Kind::kLineBreak, &run.format, {}, nullptr, link_});
}

void ShownText::AddText(const richtext::CharFormat& format, std::string_view text) {
  const auto font = static_cast<std::size_t>(std::max(format.font, 0));
  const SymbolFont symbols = font < document_.fonts.size()
                                 ? richtext::SymbolFontOf(document_.fonts[font].name)
                                 : SymbolFont::kNone;
  while (!text.empty()) {
    const std::size_t size = std::min(text.find_first_of("\t\v\f\r\n"), text.size());
    if (size > 0) {
      std::string_view shown = text.substr(0, size);
      if (symbols != SymbolFont::kNone) shown = Keep(WithUnicodeSymbols(shown, symbols));
      pieces_.push_back({Kind::kText, &format, shown, nullptr, link_});
    } else {
      const char c = text.front();
      const Kind kind = c == '\t' ? Kind::kTab : c == '\f' ? Kind::kPageBreak : Kind::kLineBreak;
      pieces_.push_back({kind, &format, {}, nullptr, link_});
    }
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
}

void ShownText::AddPicture(const richtext::CharFormat& format, const richtext::Picture& picture) {
  pieces_.push_back({Kind::kPicture, &format, {}, &picture, link_});
}

std::string_view ShownText::Keep(std::string text) { return kept_.emplace_front(std::move(text)); }

}  // namespace tenora::html
