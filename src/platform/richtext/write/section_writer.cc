#include "platform/richtext/write/section_writer.h"

#include <utility>

#include "platform/richtext/write/format_writer.h"

namespace tenora::richtext {
namespace {

const char* BeginWord(Section::Begin begin) {
  switch (begin) {
    case Section::Begin::kContinuous:
      return "sbknone";
    case Section::Begin::kColumn:
      return "sbkcol";
    case Section::Begin::kPage:
      return nullptr;  // as \sectd says
    case Section::Begin::kEvenPage:
      return "sbkeven";
    case Section::Begin::kOddPage:
      return "sbkodd";
  }
  return nullptr;
}

}  // namespace

void WritePageBorders(const PageSetup& page, SourceText* out) {
  if (!page.borders) return;
  const PageBorders& borders = *page.borders;
  if (borders.around_header) out->Word("pgbrdrhead");
  if (borders.around_footer) out->Word("pgbrdrfoot");
  WriteBorder("pgbrdrt", borders.top, out);
  WriteBorder("pgbrdrl", borders.left, out);
  WriteBorder("pgbrdrb", borders.bottom, out);
  WriteBorder("pgbrdrr", borders.right, out);
  const int options =
      static_cast<int>(borders.pages) | (borders.from_paper ? kBordersFromPaper : 0);
  if (options != 0) out->Word("pgbrdropt", options);
}

void WriteSection(const Section& section, SourceText* out) {
  out->Word("sectd");
  if (const char* const word = BeginWord(section.begin)) out->Word(word);
  const PageSetup& page = section.page;
  if (page.width != 0) out->Word("pgwsxn", page.width);
  if (page.height != 0) out->Word("pghsxn", page.height);
  // Margins of 0 too: without the words, the section would have the document's.
  const std::pair<const char*, int> margins[] = {{"marglsxn", page.left},
                                                 {"margrsxn", page.right},
                                                 {"margtsxn", page.top},
                                                 {"margbsxn", page.bottom}};
  for (const auto& [word, value] : margins) out->Word(word, value);
  const bool upright = page.width > 0 && page.height >= page.width;
  if (page.landscape)
    out->Word("lndscpsxn");
  else if (!upright)
    out->Word("lndscpsxn", 0);
  WritePageBorders(page, out);
  out->Raw(page.other_words, true);
  out->LineEnd();
  for (const HeadGroup& group : section.head_groups) {
    out->Raw(group.source);
    out->LineEnd();
  }
}

}  // namespace tenora::richtext
