#include "output/html/document_parts.h"

#include <algorithm>
#include <memory>

#include "platform/richtext/document_text.h"
#include "platform/richtext/page_heads.h"
#include "platform/richtext/page_number_fields.h"

namespace tenora::html {
namespace {

constexpr int kUsualWidth = 9638;  // A4 with margins of 2 cm
constexpr int kNarrowest = 4000, kWidest = 16'000;

std::vector<richtext::Block> OnOnePage(richtext::PageHeads::Blocks blocks) {
  if (blocks == nullptr || !richtext::Shows(*blocks)) return {};
  return richtext::WithPageNumbers(*blocks, {1, 1});
}

void CollectBoxesBelow(const richtext::Document& document, std::span<const richtext::Block> blocks,
                       std::vector<TextBox>* below) {
  for (const richtext::Block& block : blocks) {
    if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) {
      for (const TextBox& box : TextBoxesOf(*paragraph)) {
        if (StandsBelow(box, document.page)) below->push_back(box);
      }
      continue;
    }
    for (const richtext::Row& row : std::get<std::shared_ptr<richtext::Table>>(block)->rows) {
      for (const richtext::Cell& cell : row.cells) CollectBoxesBelow(document, cell.blocks, below);
    }
  }
}

// Makes the area's indents no larger than the block's.
void Limit(const richtext::Block& block, TextArea* area) {
  if (!richtext::Shows(block)) return;
  if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) {
    const richtext::ParagraphFormat& format = paragraph->format;
    const int left = format.left_indent + std::min(format.first_indent, 0);
    area->left = std::clamp(left, 0, area->left);
    area->right = std::clamp(format.right_indent, 0, area->right);
    return;
  }
  for (const richtext::Row& row : std::get<std::shared_ptr<richtext::Table>>(block)->rows) {
    if (row.alignment != richtext::Alignment::kLeft) continue;
    area->left = std::clamp(row.left_edge + std::max(row.half_gap, 0), 0, area->left);
  }
}

}  // namespace

std::span<const richtext::Block> WithoutEmptyEnds(std::span<const richtext::Block> blocks) {
  while (!blocks.empty() && !richtext::Shows(blocks.front())) blocks = blocks.subspan(1);
  while (!blocks.empty() && !richtext::Shows(blocks.back()))
    blocks = blocks.first(blocks.size() - 1);
  return blocks;
}

std::vector<TextBox> BoxesIn(const DocumentParts& parts, const richtext::Paragraph& paragraph) {
  std::vector<TextBox> boxes = TextBoxesOf(paragraph);
  std::erase_if(boxes, [&](const TextBox& box) { return StandsBelow(box, parts.document.page); });
  return boxes;
}

DocumentParts PartsOf(const richtext::Document& document) {
  DocumentParts parts{document, {}, {}, {}, {}, {}, {}, richtext::NoteList(document.page)};
  const richtext::PageHeads heads =
      richtext::PageHeadsOf(document, richtext::SectionsOf(document).front());
  const richtext::PageSide side = heads.SideOf(1, heads.first_number.value_or(1));
  parts.header = OnOnePage(heads.Header(side));
  parts.footer = OnOnePage(heads.Footer(side));
  parts.text = document.blocks;
  if (const auto fields = richtext::PageFieldsIn(document.blocks); fields.number || fields.count) {
    parts.numbered = OnOnePage(&document.blocks);
    parts.text = parts.numbered;
  }
  // Empty paragraphs at the start stand for a margin of the page.
  parts.text = WithoutEmptyEnds(parts.text);
  // In this order the numbers in the text are those on paper.
  for (const std::span<const richtext::Block> part :
       {parts.text, std::span<const richtext::Block>(parts.header),
        std::span<const richtext::Block>(parts.footer)}) {
    parts.note_list.Add(part);
    CollectBoxesBelow(document, part, &parts.below);
  }
  for (const auto* const notes : {&parts.note_list.footnotes(), &parts.note_list.endnotes()}) {
    for (const richtext::NoteList::Note note : *notes) {
      const auto shown = WithoutEmptyEnds(*note);
      if (!shown.empty()) parts.notes.push_back(shown);
    }
  }
  return parts;
}

TextArea TextAreaOf(const DocumentParts& parts) {
  TextArea area;
  area.left = area.right = kNarrowest;
  for (const std::span<const richtext::Block> part :
       {std::span<const richtext::Block>(parts.header), parts.text,
        std::span<const richtext::Block>(parts.footer)}) {
    for (const richtext::Block& block : part) Limit(block, &area);
  }
  if (area.left == kNarrowest) area.left = 0;
  if (area.right == kNarrowest) area.right = 0;
  const richtext::PageSetup& page = parts.document.page;
  area.width = page.width > 0 ? page.width - std::max(page.left, 0) - std::max(page.right, 0)
                              : kUsualWidth + area.left + area.right;
  area.width = std::clamp(area.width, kNarrowest + area.left + area.right, kWidest);
  return area;
}

}  // namespace tenora::html
