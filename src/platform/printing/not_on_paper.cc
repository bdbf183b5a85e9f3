#include "platform/printing/not_on_paper.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/printing/pictures.h"
#include "platform/printing/qt_application.h"
#include "platform/richtext/document_text.h"

namespace tenora::printing {
namespace {

using PicturePointer = std::shared_ptr<const richtext::Picture>;
using VerbatimPointer = std::shared_ptr<const richtext::Verbatim>;

// What carried source is that is shown by neither text nor picture; empty for what has nothing to
// show, as a bookmark.
std::string_view WordsFor(std::string_view source) {
  constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
      {"{\\footnote", "a footnote"}, {"{\\object", "an embedded object without a picture"},
      {"{\\shp", "a drawing"},       {"{\\*\\do", "a drawing"},
      {"{\\do", "a drawing"},        {"{\\mmath", "a formula"},
      {"{\\*\\mmath", "a formula"}};
  for (const auto& [opening, words] : kKinds) {
    if (source.starts_with(opening)) return words;
  }
  return {};
}

class Finder {
 public:
  std::vector<std::string> Run(const richtext::Document& document) {
    LookThrough(document.blocks);
    for (const richtext::HeadGroup& group : document.head_groups) LookThrough(group.blocks);
    return std::move(found_);
  }

 private:
  void LookThrough(const std::vector<richtext::Block>& blocks) {
    richtext::ForEachParagraph(blocks, [&](const richtext::Paragraph& paragraph, auto) {
      for (const richtext::Run& run : paragraph.runs) {
        if (!run.format.hidden) LookAt(run);
      }
    });
  }

  void LookAt(const richtext::Run& run) {
    if (const auto* picture = std::get_if<PicturePointer>(&run.object)) return LookAt(**picture);
    const auto* verbatim = std::get_if<VerbatimPointer>(&run.object);
    if (verbatim == nullptr) return;
    if ((*verbatim)->shown_picture) return LookAt(*(*verbatim)->shown_picture);
    if ((*verbatim)->shown_text.empty()) Add(WordsFor((*verbatim)->source));
  }

  void LookAt(const richtext::Picture& picture) {
    if (!application_) application_ = HoldQtApplication();
    if (!CanDraw(picture)) Add(WordsFor(picture));
  }

  static std::string_view WordsFor(const richtext::Picture& picture) {
    using Kind = richtext::Picture::Kind;
    if (picture.kind == Kind::kWmf) return "a WMF picture of lines and shapes";
    if (picture.kind == Kind::kEmf) return "an EMF picture of lines and shapes";
    return "a picture that cannot be read";
  }
  static std::string_view WordsFor(std::string_view source) { return printing::WordsFor(source); }

  void Add(std::string_view words) {
    if (words.empty() || std::ranges::find(found_, words) != found_.end()) return;
    found_.emplace_back(words);
  }

  std::shared_ptr<void> application_;
  std::vector<std::string> found_;
};

}  // namespace

std::vector<std::string> NotOnPaper(const richtext::Document& document) {
  return Finder().Run(document);
}

}  // namespace tenora::printing
