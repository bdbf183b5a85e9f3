#include "letters/paper_lint.h"

#include <algorithm>
#include <string>

#include "platform/printing/not_on_paper.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/document_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

TemplateFinding Finding(const std::string& words) {
  TemplateFinding finding;
  finding.kind = TemplateFinding::Kind::kNotOnPaper;
  finding.text = words;
  finding.problem = "it will not appear on paper";
  finding.advice = "put it in as a PNG or JPEG picture, or as text";
  return finding;
}

// `place`: empty for the letter's own text.
void LintBlocks(const std::vector<richtext::Block>& blocks, const std::string& place,
                printing::PaperFinder& finder, std::vector<TemplateFinding>* found) {
  using Place = printing::PaperFinder::Place;
  const Place where = place.empty() ? Place::kText : Place::kHead;
  int line = 1, position = 0;
  richtext::ForEachParagraph(
      blocks, [&](const richtext::Paragraph& paragraph, richtext::ParagraphEnd end) {
        for (const richtext::Run& run : paragraph.runs) {
          if (const std::string words = finder.NotShown(run, where); !words.empty()) {
            TemplateFinding& finding = found->emplace_back(Finding(words));
            finding.place = place;
            finding.line = line;
            finding.position = place.empty() ? position : -1;
            finding.length = place.empty() ? 1 : 0;
          }
          position += static_cast<int>(ToUtf16(run.text).size());
          line += static_cast<int>(std::ranges::count(run.text, '\v'));
        }
        ++position;
        if (end != richtext::ParagraphEnd::kCell) ++line;
      });
}

}  // namespace

std::vector<TemplateFinding> LintPaper(const RichTextBox& letter) {
  std::vector<TemplateFinding> found;
  printing::PaperFinder finder;
  LintBlocks(letter.Document().blocks, "", finder, &found);
  for (const richtext::HeadGroup* group : richtext::HeadGroupsOf(letter.Document())) {
    LintBlocks(group->blocks, group->word.starts_with("footer") ? "footer" : "header", finder,
               &found);
  }
  return found;
}

}  // namespace tenora
