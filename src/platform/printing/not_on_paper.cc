#include "platform/printing/not_on_paper.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/printing/pictures.h"
#include "platform/printing/qt_application.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/notes.h"

namespace tenora::printing {
namespace {

using PicturePointer = std::shared_ptr<const richtext::Picture>;
using VerbatimPointer = std::shared_ptr<const richtext::Verbatim>;

// What carried source is that is shown by neither text nor picture; empty for what has nothing to
// show, as a bookmark.
std::string_view WordsFor(std::string_view source) {
  constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
      {"{\\object", "an embedded object without a picture"},
      {"{\\shp", "a drawing"},
      {"{\\*\\do", "a drawing"},
      {"{\\do", "a drawing"},
      {"{\\mmath", "a formula"},
      {"{\\*\\mmath", "a formula"}};
  for (const auto& [opening, words] : kKinds) {
    if (source.starts_with(opening)) return words;
  }
  return {};
}

std::string_view WordsFor(const richtext::Picture& picture, bool in_part) {
  using Kind = richtext::Picture::Kind;
  if (picture.kind == Kind::kWmf) return in_part ? "parts of a WMF picture" : "a WMF picture";
  if (picture.kind == Kind::kEmf) return in_part ? "parts of an EMF picture" : "an EMF picture";
  return "a picture that cannot be read";
}

}  // namespace

std::string PaperFinder::NotShown(const richtext::Run& run, Place place) {
  if (run.format.hidden) return {};
  if (const auto* picture = std::get_if<PicturePointer>(&run.object))
    return std::string(NotDrawn(**picture));
  const auto* verbatim = std::get_if<VerbatimPointer>(&run.object);
  if (verbatim == nullptr) return {};
  const bool note = richtext::BlocksOfNote(run) != nullptr;
  if (note && place == Place::kHead) return "a note in a header or footer";
  if (note && place == Place::kTextBox) return "a note in a text box";
  for (const auto& figure : (*verbatim)->figures) {
    std::string words = NotShown(figure->blocks, note ? place : Place::kTextBox);
    if (words.empty() && figure->picture) words = NotDrawn(*figure->picture);
    if (!words.empty()) return words;
  }
  if (!(*verbatim)->figures.empty()) return {};
  if ((*verbatim)->shown_picture) return std::string(NotDrawn(*(*verbatim)->shown_picture));
  return std::string((*verbatim)->shown_text.empty() ? WordsFor((*verbatim)->source) : "");
}

// Of the first thing in the blocks.
std::string PaperFinder::NotShown(const std::vector<richtext::Block>& blocks, Place place) {
  std::string words;
  richtext::ForEachParagraph(blocks, [&](const richtext::Paragraph& paragraph, auto) {
    for (const richtext::Run& run : paragraph.runs) {
      if (words.empty()) words = NotShown(run, place);
    }
  });
  return words;
}

std::string_view PaperFinder::NotDrawn(const richtext::Picture& picture) {
  if (!application_) application_ = HoldQtApplication();
  const Drawable drawable = DrawableIn(picture);
  return drawable == Drawable::kWhole ? std::string_view()
                                      : WordsFor(picture, drawable == Drawable::kInPart);
}

std::vector<std::string> NotOnPaper(const richtext::Document& document) {
  PaperFinder finder;
  std::vector<std::string> found;
  const auto look_through = [&](const std::vector<richtext::Block>& blocks,
                                PaperFinder::Place place) {
    richtext::ForEachParagraph(blocks, [&](const richtext::Paragraph& paragraph, auto) {
      for (const richtext::Run& run : paragraph.runs) {
        std::string words = finder.NotShown(run, place);
        if (words.empty() || std::ranges::find(found, words) != found.end()) continue;
        found.push_back(std::move(words));
      }
    });
  };
  look_through(document.blocks, PaperFinder::Place::kText);
  for (const richtext::HeadGroup* group : richtext::HeadGroupsOf(document))
    look_through(group->blocks, PaperFinder::Place::kHead);
  return found;
}

}  // namespace tenora::printing
