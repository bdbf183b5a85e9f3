#include "platform/richtext/read/block_builder.h"

#include <algorithm>
#include <utility>

namespace tenora::richtext {
namespace {

// Users of the blocks rely on the paragraph that follows every table in RTF.
void EndWithParagraph(std::vector<Block>* blocks, const CharFormat& mark) {
  if (!blocks->empty() && std::holds_alternative<Paragraph>(blocks->back())) return;
  Paragraph paragraph;
  paragraph.mark = mark;
  blocks->emplace_back(std::move(paragraph));
}

const CharFormat& LastMark(const std::vector<Block>& blocks) {
  static const CharFormat kNone;
  const Block* block = blocks.empty() ? nullptr : &blocks.back();
  while (block != nullptr) {
    if (const auto* paragraph = std::get_if<Paragraph>(block)) return paragraph->mark;
    const auto& cells = std::get<std::shared_ptr<Table>>(*block)->rows.back().cells;
    if (cells.empty()) break;
    block = &cells.back().blocks.back();
  }
  return kNone;
}

}  // namespace

std::vector<Block>& BlockBuilder::Container(std::size_t level) {
  return level == 0 ? blocks_ : open_[level - 1].blocks;
}

void BlockBuilder::MoveTo(int level) {
  const auto wanted = static_cast<std::size_t>(std::max(level, 0));
  while (open_.size() > wanted) EndRow(static_cast<int>(open_.size()), RowDefinition());
  while (open_.size() < wanted) open_.emplace_back();
}

Paragraph& BlockBuilder::AddParagraph(int level) {
  MoveTo(level);
  return std::get<Paragraph>(Container(open_.size()).emplace_back(std::in_place_type<Paragraph>));
}

void BlockBuilder::EndCell() { EndCell(&open_.back()); }

void BlockBuilder::EndCell(OpenRow* row) {
  Cell cell;
  cell.blocks = std::exchange(row->blocks, {});
  EndWithParagraph(&cell.blocks, LastMark(cell.blocks));
  row->cells.push_back(std::move(cell));
}

void BlockBuilder::EndRow(int level, const RowDefinition& definition) {
  const auto wanted = static_cast<std::size_t>(level);
  while (open_.size() > wanted) EndRow(static_cast<int>(open_.size()), RowDefinition());
  if (open_.size() < wanted) return;
  OpenRow open = std::move(open_.back());
  open_.pop_back();
  if (!open.blocks.empty()) EndCell(&open);
  if (open.cells.empty()) return;
  Row row;
  row.cells = std::move(open.cells);
  const CharFormat mark = LastMark(row.cells.back().blocks);
  const std::size_t filled = row.cells.size();
  definition.Apply(&row);
  for (std::size_t i = filled; i < row.cells.size(); ++i)
    std::get<Paragraph>(row.cells[i].blocks.back()).mark = mark;

  std::vector<Block>& container = Container(open_.size());
  if (container.empty() || !std::holds_alternative<std::shared_ptr<Table>>(container.back()))
    container.emplace_back(std::make_shared<Table>());
  std::get<std::shared_ptr<Table>>(container.back())->rows.push_back(std::move(row));
}

bool BlockBuilder::Empty(int level) const {
  const auto wanted = static_cast<std::size_t>(std::max(level, 0));
  if (wanted == 0) return open_.empty() && blocks_.empty();
  return open_.size() < wanted || (open_.size() == wanted && open_.back().blocks.empty());
}

Paragraph* BlockBuilder::LastParagraph() {
  MoveTo(0);
  return blocks_.empty() ? nullptr : std::get_if<Paragraph>(&blocks_.back());
}

std::vector<Block> BlockBuilder::Finish(const CharFormat& mark) {
  MoveTo(0);
  EndWithParagraph(&blocks_, mark);
  return std::move(blocks_);
}

}  // namespace tenora::richtext
