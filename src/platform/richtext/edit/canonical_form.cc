#include "platform/richtext/canonical_form.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "platform/richtext/document_text.h"
#include "platform/richtext/table_numbers.h"
#include "platform/richtext/write/format_writer.h"

namespace tenora::richtext {
namespace {

bool IsPlainText(const Run& run) { return run.object.index() == 0; }

void JoinRuns(std::vector<Run>* runs) {
  std::vector<Run> joined;
  joined.reserve(runs->size());
  for (Run& run : *runs) {
    if (run.text.empty()) continue;
    // A field without an instruction does not count as one.
    if (run.field != nullptr && run.field->instruction.empty()) run.field = nullptr;
    Run* last = joined.empty() ? nullptr : &joined.back();
    if (last != nullptr && IsPlainText(*last) && IsPlainText(run) && last->format == run.format &&
        last->field == run.field)
      last->text += run.text;
    else
      joined.push_back(std::move(run));
  }
  *runs = std::move(joined);
}

// True when there is a bullet among the paragraphs.
bool Tidy(std::vector<Block>* blocks) {
  bool bullets = false;
  for (Block& block : *blocks) {
    if (auto* paragraph = std::get_if<Paragraph>(&block)) {
      JoinRuns(&paragraph->runs);
      MoveMarksOutOfCodes(paragraph);
      bullets |= paragraph->format.bullet.kind == Bullet::Kind::kBullet;
      continue;
    }
    auto& table = std::get<std::shared_ptr<Table>>(block);
    table = std::make_shared<Table>(*table);
    for (Row& row : table->rows) {
      for (Cell& cell : row.cells) bullets |= Tidy(&cell.blocks);
    }
  }
  return bullets;
}

}  // namespace

Document InCanonicalForm(Document document) {
  if (auto* last = std::get_if<Paragraph>(&document.blocks.back())) last->next_section = nullptr;
  if (Tidy(&document.blocks) && std::ranges::none_of(document.fonts, IsBulletFont)) {
    document.fonts.push_back(BulletFont());
  }
  for (HeadGroup& group : document.head_groups) Tidy(&group.blocks);
  std::vector<Font> fonts;
  std::vector<Colour> colours;
  MoveToTables(&document, &fonts, &colours);
  Renumber(&document);
  return document;
}

}  // namespace tenora::richtext
