#include "platform/richtext/write/section_writer.h"

#include <utility>

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
  out->Raw(page.other_words, true);
  out->LineEnd();
  for (const HeadGroup& group : section.head_groups) {
    out->Raw(group.source);
    out->LineEnd();
  }
}

}  // namespace tenora::richtext
