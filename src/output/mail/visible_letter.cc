#include "output/mail/visible_letter.h"

#include <memory>

namespace tenora {
namespace {

using richtext::Block;
using richtext::Run;

void ShowRuns(richtext::Paragraph& paragraph) {
  // Marks are bookmarks and their like; their offsets count text that is removed.
  paragraph.marks.clear();
  std::erase_if(paragraph.runs, [](const Run& run) { return run.format.hidden; });
  for (Run& run : paragraph.runs) {
    const auto* held = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
    if (held == nullptr) continue;
    const std::shared_ptr<const richtext::Verbatim> object = *held;
    run.object = std::monostate();
    run.text = object->shown_text;
    if (!object->shown_picture) continue;
    run.text.clear();
    run.object = object->shown_picture;
  }
}

// Tables are shared between copies of a document: each becomes a copy of its own.
void ShowBlocks(std::vector<Block>& blocks) {
  for (Block& block : blocks) {
    if (auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&block)) {
      *table = std::make_shared<richtext::Table>(**table);
      for (richtext::Row& row : (*table)->rows) {
        for (richtext::Cell& cell : row.cells) ShowBlocks(cell.blocks);
      }
    } else {
      ShowRuns(std::get<richtext::Paragraph>(block));
    }
  }
}

}  // namespace

richtext::Document VisibleLetter(const richtext::Document& letter) {
  richtext::Document shown = letter;
  shown.title.clear();
  shown.info.clear();
  shown.head_groups.clear();
  ShowBlocks(shown.blocks);
  return shown;
}

}  // namespace tenora
