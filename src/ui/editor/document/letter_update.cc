#include "ui/editor/document/letter_update.h"

#include <QTextBlock>
#include <QTextCursor>
#include <algorithm>

#include "platform/printing/document_length.h"
#include "ui/editor/document/letter_loader.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Cell;
using richtext::Field;
using richtext::Paragraph;
using richtext::Row;
using richtext::Run;
using richtext::Table;

bool SameField(const Field* left, const Field* right) {
  for (; left != right; left = left->outer.get(), right = right->outer.get()) {
    if (left == nullptr || right == nullptr) return false;
    if (left->instruction != right->instruction || left->flags != right->flags) return false;
  }
  return true;
}

const std::string* SourceOf(const Run& run) {
  if (const auto* picture = std::get_if<std::shared_ptr<const richtext::Picture>>(&run.object))
    return &(*picture)->source;
  if (const auto* object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object))
    return &(*object)->source;
  return nullptr;
}

bool SameRun(const Run& left, const Run& right) {
  if (left.format != right.format || left.text != right.text) return false;
  if (left.object.index() != right.object.index()) return false;
  if (!SameField(left.field.get(), right.field.get())) return false;
  const std::string *a = SourceOf(left), *b = SourceOf(right);
  return a == nullptr || *a == *b;
}

bool SameSection(const richtext::Section* left, const richtext::Section* right) {
  if (left == nullptr || right == nullptr || left == right) return left == right;
  return left->begin == right->begin && left->page == right->page &&
         std::ranges::equal(left->head_groups, right->head_groups, {}, &richtext::HeadGroup::source,
                            &richtext::HeadGroup::source);
}

bool SameText(const Paragraph& left, const Paragraph& right) {
  return SameSection(left.next_section.get(), right.next_section.get()) &&
         std::ranges::equal(left.runs, right.runs, SameRun) &&
         std::ranges::equal(left.marks, right.marks,
                            [](const richtext::Mark& a, const richtext::Mark& b) {
                              return a.offset == b.offset && a.source == b.source;
                            });
}

bool SameFormats(const Paragraph& left, const Paragraph& right) {
  return left.format == right.format && left.mark == right.mark;
}

// Compares two states of a letter paragraph by paragraph while their structure is the same.
class Comparison {
 public:
  struct Change {
    int position;
    const Paragraph *from, *to;
  };

  // False where tables or the number of paragraphs differ.
  bool Compare(const std::vector<Block>& from, const std::vector<Block>& to, bool visible) {
    if (from.size() != to.size()) return false;
    for (std::size_t i = 0; i < from.size(); ++i) {
      if (from[i].index() != to[i].index()) return false;
      const bool same = from[i].index() == 0
                            ? Compare(std::get<0>(from[i]), std::get<0>(to[i]), visible)
                            : Compare(*std::get<1>(from[i]), *std::get<1>(to[i]), visible);
      if (!same) return false;
    }
    return true;
  }
  const std::vector<Change>& changes() const { return changes_; }

  bool Same(const Block& left, const Block& right) {
    if (left.index() != right.index()) return false;
    if (left.index() == 0) return Compare(std::get<0>(left), std::get<0>(right), false);
    return std::get<1>(left) == std::get<1>(right) ||
           Compare(*std::get<1>(left), *std::get<1>(right), false);
  }

 private:
  bool Compare(const Paragraph& from, const Paragraph& to, bool visible) {
    const bool same = SameText(from, to) && SameFormats(from, to);
    if (!same) changes_.push_back({position_, &from, &to});
    position_ += printing::Length(from);
    return same || visible;
  }

  bool Compare(const Table& from, const Table& to, bool visible) {
    if (from.rows.size() != to.rows.size()) return false;
    for (std::size_t r = 0; r < from.rows.size(); ++r) {
      const Row &left = from.rows[r], &right = to.rows[r];
      if (left.definition != right.definition || left.cells.size() != right.cells.size())
        return false;
      for (std::size_t c = 0; c < left.cells.size(); ++c) {
        const bool shown = left.cells[c].vertical_merge != Cell::Merge::kContinued &&
                           left.cells[c].horizontal_merge != Cell::Merge::kContinued;
        if (!Compare(left.cells[c].blocks, right.cells[c].blocks, visible && shown)) return false;
      }
    }
    return true;
  }

  std::vector<Change> changes_;
  int position_ = 0;
};

bool IsTable(const Block& block) { return block.index() != 0; }

// The numbers of blocks at the front and at the end that are the same. What is between them begins
// with a paragraph that follows a paragraph, and ends with one, so that it can be removed from Qt's
// document.
struct Middle {
  std::size_t front = 0, end = 0;
};

Middle DifferentBlocks(const std::vector<Block>& from, const std::vector<Block>& to) {
  const std::size_t most = std::min(from.size(), to.size());
  Middle middle;
  Comparison comparison;
  while (middle.front < most && comparison.Same(from[middle.front], to[middle.front]))
    ++middle.front;
  while (middle.end < most - middle.front &&
         comparison.Same(from[from.size() - 1 - middle.end], to[to.size() - 1 - middle.end]))
    ++middle.end;
  const auto begins_well = [&](std::size_t first) {
    return first == 0 || (first < most && !IsTable(from[first]) && !IsTable(to[first]) &&
                          !IsTable(from[first - 1]));
  };
  while (!begins_well(middle.front)) --middle.front;
  const auto ends_well = [&](const std::vector<Block>& blocks) {
    return blocks.size() - middle.end > middle.front &&
           !IsTable(blocks[blocks.size() - middle.end - 1]);
  };
  while (middle.end > 0 && (!ends_well(from) || !ends_well(to))) --middle.end;
  return middle;
}

// Replaces what is shown between the blocks that stay.
void ReplaceMiddle(QTextCursor* cursor, LetterLoader* loader, const std::vector<Block>& shown,
                   const PositionMap& positions, const Middle& middle,
                   const std::vector<Block>& blocks) {
  const QTextDocument& document = *cursor->document();
  const auto last = shown.end() - static_cast<std::ptrdiff_t>(middle.end) - 1;
  int start = 0, end = 0;
  for (auto block = shown.begin(); block != last; ++block) {
    end += printing::Length(*block);
    if (block < shown.begin() + static_cast<std::ptrdiff_t>(middle.front)) start = end;
  }
  if (middle.front > 0) cursor->setPosition(document.findBlock(positions.ToQt(start)).position());
  cursor->setPosition(document.findBlock(positions.ToQt(end)).position(), QTextCursor::KeepAnchor);
  cursor->movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
  cursor->removeSelectedText();
  loader->Insert(cursor, blocks, true);
}

}  // namespace

void UpdateLetter(QTextDocument* document, LetterFormats* formats, const std::vector<Block>& shown,
                  const PositionMap& positions, const std::vector<Block>& wanted) {
  LetterLoader loader(*formats);
  Comparison comparison;
  QTextCursor cursor(document);
  cursor.beginEditBlock();
  if (comparison.Compare(shown, wanted, true)) {
    const auto& changes = comparison.changes();
    // From the end, so that the positions before each change stay valid.
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
      const QTextBlock block = document->findBlock(positions.ToQt(change->position));
      cursor.setPosition(block.position());
      if (!SameFormats(*change->from, *change->to)) loader.SetFormats(&cursor, *change->to);
      if (SameText(*change->from, *change->to)) continue;
      cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
      cursor.removeSelectedText();
      loader.InsertContent(&cursor, *change->to);
    }
  } else {
    const Middle middle = DifferentBlocks(shown, wanted);
    const std::vector<Block> blocks(wanted.begin() + static_cast<std::ptrdiff_t>(middle.front),
                                    wanted.end() - static_cast<std::ptrdiff_t>(middle.end));
    ReplaceMiddle(&cursor, &loader, shown, positions, middle, blocks);
  }
  cursor.endEditBlock();
}

void ReplaceBlock(QTextDocument* document, LetterFormats* formats, const std::vector<Block>& shown,
                  const PositionMap& positions, std::size_t index,
                  const std::vector<Block>& replacement) {
  std::size_t front = index, last = index;
  while (front > 0 && (IsTable(shown[front]) || IsTable(shown[front - 1]))) --front;
  while (IsTable(shown[last])) ++last;  // a letter ends with a paragraph
  const auto at = [&](std::size_t i) { return shown.begin() + static_cast<std::ptrdiff_t>(i); };
  std::vector<Block> blocks(at(front), at(index));
  blocks.insert(blocks.end(), replacement.begin(), replacement.end());
  blocks.insert(blocks.end(), at(index + 1), at(last + 1));
  LetterLoader loader(*formats);
  QTextCursor cursor(document);
  cursor.beginEditBlock();
  ReplaceMiddle(&cursor, &loader, shown, positions, {front, shown.size() - last - 1}, blocks);
  cursor.endEditBlock();
}

}  // namespace tenora
