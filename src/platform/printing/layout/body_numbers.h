// The page numbers and page counts in the text of a document, in its tables, text boxes and notes.
// What they show is known when the text is laid out, and how long that is may move the text.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/printing/layout/note_marks.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"
#include "platform/richtext/document_sections.h"

namespace tenora::printing {

struct PageTotals {
  int pages = 0;                // 0 until counted
  std::vector<int> by_section;  // the pages that begin in each
};

class BodyNumbers {
 public:
  // Points into the document.
  BodyNumbers(const richtext::Document& document, const Notes& notes,
              const std::vector<richtext::DocumentSection>& sections);

  bool empty() const { return fields_.empty(); }
  // What the run shows in place of what it holds; null for a run that shows that.
  const std::string* TextOf(const richtext::Run& run) const;

  // What a page that shows this number holds. The pages of a layout come in their order.
  void AddPage(int number, const std::vector<TextRange>& ranges);
  // All pages were added: the fields show other texts from now on. False where none differs.
  bool Update(const PageTotals& totals);

 private:
  struct PageField {
    std::vector<const richtext::Run*> runs;  // the first shows the number, the others nothing
    int position = 0;
    std::size_t section = 0;
    int page = 0;  // where it is, by the number that is shown; 0 where it is not on paper
    std::string text;
  };

  // Without a section, that of the position counts.
  using MaybeSection = std::optional<std::size_t>;
  void Collect(const std::vector<richtext::Block>& blocks, int position, MaybeSection section,
               bool in_box);
  void Collect(const richtext::Paragraph& paragraph, int position, MaybeSection section,
               bool in_box);
  std::size_t SectionAt(int position) const;

  std::vector<int> section_ends_;               // positions
  std::vector<richtext::Bullet::Kind> styles_;  // of the sections' page numbers
  std::vector<PageField> fields_;               // in the order of their positions
  std::unordered_map<const richtext::Run*, std::string> texts_;
};

}  // namespace tenora::printing
