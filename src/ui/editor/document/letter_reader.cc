#include "ui/editor/document/letter_reader.h"

#include <QTextCursor>
#include <QTextList>
#include <algorithm>
#include <utility>

#include "platform/printing/document_length.h"
#include "ui/editor/tables/row_source.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Cell;
using richtext::Paragraph;
using richtext::Row;
using richtext::Run;
using richtext::Table;

constexpr int kNewTableWidth = 9000;
constexpr int kListIndent = 360;
constexpr int kLine = 10;  // twips, the borders around the cells of an HTML table
// Qt lays out a nested table twice for each table around it. HTML pages nest tables for their
// layout: of deeper ones only the contents are kept.
constexpr int kDeepestTable = 6;

bool IsFiller(const QTextBlock& block, const QTextFrame::iterator& next) {
  return block.length() == 1 && block.blockFormat().hasProperty(kFillerProperty) &&
         qobject_cast<QTextTable*>(next.currentFrame()) != nullptr;
}

bool IsOwn(const QTextTable& table) { return table.format().hasProperty(kTableProperty); }

std::vector<int> EdgesOf(const QTextTable& table) {
  const auto data = SharedProperty<TableData>(table.format(), kTableProperty);
  const auto wanted = static_cast<std::size_t>(table.columns()) + 1;
  if (data != nullptr && data->edges.size() == wanted) return data->edges;
  std::vector<int> edges;
  for (int c = 0; c <= table.columns(); ++c) edges.push_back(kNewTableWidth * c / table.columns());
  return edges;
}

int LengthOf(const std::vector<Block>& blocks) {
  int length = 0;
  for (const Block& block : blocks) length += printing::Length(block);
  return length;
}

// A row of the grid for places whose cells were read one after the other.
template <class Places>
std::vector<GridCell> GridRow(const Places& places) {
  std::vector<GridCell> cells;
  int next = 0;
  for (const auto& place : places) {
    const int kept = place.part == nullptr ? 0 : static_cast<int>(place.part->kept.size());
    GridCell cell{.column = place.column, .span = place.span, .first = next, .rows = place.rows};
    cell.count = std::max(kept + (place.covered ? 0 : 1), 1);
    cell.covered = place.covered;
    cells.push_back(cell);
    next += cell.count;
  }
  return cells;
}

// Text from HTML has Qt's own lists.
richtext::ParagraphFormat WithListMark(richtext::ParagraphFormat format, const QTextList& list) {
  using Kind = richtext::Bullet::Kind;
  format.bullet.indent = kListIndent;
  format.left_indent += kListIndent * std::clamp(list.format().indent(), 1, 9);
  format.first_indent = -kListIndent;
  switch (list.format().style()) {
    case QTextListFormat::ListDecimal:
      format.bullet.kind = Kind::kDecimal;
      break;
    case QTextListFormat::ListLowerAlpha:
      format.bullet.kind = Kind::kLowerLetter;
      break;
    case QTextListFormat::ListUpperAlpha:
      format.bullet.kind = Kind::kUpperLetter;
      break;
    case QTextListFormat::ListLowerRoman:
      format.bullet.kind = Kind::kLowerRoman;
      break;
    case QTextListFormat::ListUpperRoman:
      format.bullet.kind = Kind::kUpperRoman;
      break;
    default:
      format.bullet.kind = Kind::kBullet;
      format.bullet.before = "\u2022";
      return format;
  }
  format.bullet.after = ".";
  return format;
}

// True when the places are all cells of one row, in order.
template <class Places>
bool IsWholeRow(const Places& places) {
  std::shared_ptr<const Row> row;
  int next = 0;
  for (const auto& place : places) {
    if (place.part == nullptr || (row != nullptr && place.part->row != row)) return false;
    row = place.part->row;
    if (place.part->first != next) return false;
    next += place.part->count;
  }
  return row != nullptr && next == static_cast<int>(row->cells.size());
}

}  // namespace

std::vector<Block> LetterReader::Read(const QTextDocument& document) {
  positions_ = PositionMap();
  found_ = {};
  return ReadBlocks(document.rootFrame()->begin());
}

std::vector<Block> LetterReader::ReadBlocks(QTextFrame::iterator it) {
  std::vector<Block> blocks;
  AddBlocks(it, &blocks);
  if (blocks.empty() || !std::holds_alternative<Paragraph>(blocks.back()))
    blocks.emplace_back(Paragraph());
  return blocks;
}

void LetterReader::AddBlocks(QTextFrame::iterator it, std::vector<Block>* blocks) {
  while (!it.atEnd()) {
    QTextFrame* const frame = it.currentFrame();
    const QTextBlock block = it.currentBlock();
    ++it;
    const auto* table = qobject_cast<QTextTable*>(frame);
    if (table != nullptr && (depth_ < kDeepestTable || IsOwn(*table))) {
      // Adjacent tables are one table in the letter.
      if (blocks->empty() || !std::holds_alternative<std::shared_ptr<Table>>(blocks->back()))
        blocks->emplace_back(std::make_shared<Table>());
      ++depth_;
      ReadTable(*table, std::get<std::shared_ptr<Table>>(blocks->back()).get());
      --depth_;
    } else if (table != nullptr) {
      for (int i = 0; i < table->rows() * table->columns(); ++i) {
        const int row = i / table->columns(), column = i % table->columns();
        const QTextTableCell cell = table->cellAt(row, column);
        if (cell.row() == row && cell.column() == column) AddBlocks(cell.begin(), blocks);
      }
    } else if (frame != nullptr) {
      AddBlocks(frame->begin(), blocks);
    } else if (IsFiller(block, it)) {
      positions_.Add(0, 1);
    } else {
      blocks->emplace_back(ReadParagraph(block));
    }
  }
}

Paragraph LetterReader::ReadParagraph(const QTextBlock& block) {
  Paragraph paragraph;
  length_ = 0;
  paragraph.format = formats_.ParagraphOf(block.blockFormat());
  if (const QTextList* list = block.textList())
    paragraph.format = WithListMark(paragraph.format, *list);
  paragraph.mark = formats_.CharOf(block.charFormat());
  for (auto it = block.begin(); !it.atEnd(); ++it) ReadFragment(it.fragment(), &paragraph);
  positions_.Add(1, 1);
  return paragraph;
}

void LetterReader::ReadFragment(const QTextFragment& fragment, Paragraph* paragraph) {
  const QTextCharFormat format = fragment.charFormat();
  const QString text = fragment.text();
  if (format.objectType() == kLetterObject) {
    const auto object = SharedProperty<InlineObject>(format, kObjectProperty);
    for (qsizetype i = 0; object != nullptr && i < text.size(); ++i)
      ReadObject(*object, format, paragraph);
    return;
  }
  Run run;
  run.format = formats_.CharOf(format);
  run.field = SharedProperty<richtext::Field>(format, kFieldProperty);
  QString plain;
  for (const QChar c : text) {
    const bool lost = c == QChar::ObjectReplacementCharacter;
    positions_.Add(lost ? 0 : 1, 1);
    if (!lost) plain += c == QChar::LineSeparator ? QLatin1Char('\v') : c;
  }
  run.text = plain.toStdString();
  AddRun(std::move(run), paragraph);
}

void LetterReader::ReadObject(const InlineObject& object, const QTextCharFormat& format,
                              Paragraph* paragraph) {
  using Kind = InlineObject::Kind;
  if (object.kind == Kind::kMark) paragraph->marks.push_back({length_, object.mark_source});
  if (object.kind == Kind::kSection && depth_ == 0) paragraph->next_section = object.next_section;
  int units = 0;
  for (Run run : object.runs) {
    units += run.object.index() == 0 ? printing::TextUnits(run.text) : 1;
    if (object.kind != Kind::kHidden) {
      run.format = formats_.CharOf(format);
      run.field = SharedProperty<richtext::Field>(format, kFieldProperty);
    }
    AddRun(std::move(run), paragraph);
  }
  positions_.Add(units, 1);
}

void LetterReader::AddRun(Run run, Paragraph* paragraph) {
  if (run.text.empty()) return;
  length_ += run.text.size();
  Run* last = paragraph->runs.empty() ? nullptr : &paragraph->runs.back();
  if (last != nullptr && last->object.index() == 0 && run.object.index() == 0 &&
      last->format == run.format && last->field == run.field)
    last->text += run.text;
  else
    paragraph->runs.push_back(std::move(run));
}

void LetterReader::ReadTable(const QTextTable& table, Table* read) {
  FoundTable found{read, {read->rows.size(), EdgesOf(table), {}}};
  for (int row = 0; row < table.rows(); ++row) {
    std::vector<Place> places = ReadPlaces(table, row);
    if (places.empty()) found.table = nullptr;
    if (&table == wanted_) found.grid.rows.push_back(GridRow(places));
    Row read_row = RowOf(std::move(places), found.grid.edges);
    if (!read_row.cells.empty()) read->rows.push_back(std::move(read_row));
  }
  if (&table == wanted_) found_ = std::move(found);
}

std::vector<LetterReader::Place> LetterReader::ReadPlaces(const QTextTable& table, int row) {
  std::vector<Place> places;
  for (int column = 0; column < table.columns();) {
    const QTextTableCell cell = table.cellAt(row, column);
    Place place;
    place.column = column;
    place.span =
        std::clamp(cell.columnSpan() - (column - cell.column()), 1, table.columns() - column);
    place.rows = cell.rowSpan();
    place.lined = !IsOwn(table) && table.format().border() > 0;
    place.covered = cell.row() != row;
    place.data = SharedProperty<CellData>(cell.format(), kCellProperty);
    column += place.span;
    const auto offset = static_cast<std::size_t>(row - cell.row());
    const bool absent = place.data != nullptr && place.data->parts.empty();
    if (absent && (place.covered || cell.firstPosition() == cell.lastPosition())) {
      if (!place.covered) positions_.Add(0, 1);
      continue;
    }
    const bool whole =
        place.data != nullptr && static_cast<int>(place.data->parts.size()) == cell.rowSpan();
    if (whole || (place.data != nullptr && !absent && offset == 0))
      place.part = &place.data->parts[offset];
    if (!place.covered) place.blocks = ReadBlocks(cell.begin());
    const std::size_t kept = place.part == nullptr ? 0 : place.part->kept.size();
    for (std::size_t i = 0; i < kept; ++i) positions_.Add(LengthOf(place.part->kept[i]), 0);
    if (place.covered && place.part == nullptr) positions_.Add(1, 0);
    places.push_back(std::move(place));
  }
  return places;
}

Row LetterReader::RowOf(std::vector<Place> places, const std::vector<int>& edges) {
  const bool whole = IsWholeRow(places);
  Row row;
  row.half_gap = 108;
  for (const Place& place : places) {
    if (place.part == nullptr) continue;
    row = *place.part->row;
    break;
  }
  if (!whole) row.cells.clear();
  for (Place& place : places) {
    std::vector<std::vector<Block>> contents;
    if (!place.covered) contents.push_back(std::move(place.blocks));
    if (place.part != nullptr)
      contents.insert(contents.end(), place.part->kept.begin(), place.part->kept.end());
    if (contents.empty()) contents.push_back({Paragraph()});
    if (whole) {
      for (std::size_t i = 0; i < contents.size(); ++i)
        row.cells[static_cast<std::size_t>(place.part->first) + i].blocks = std::move(contents[i]);
      continue;
    }
    for (std::size_t i = 0; i < contents.size(); ++i) {
      Cell cell;
      if (place.part != nullptr)
        cell = place.part->row->cells[static_cast<std::size_t>(place.part->first) + i];
      if (place.lined) {
        for (richtext::Border* border : {&cell.top, &cell.bottom, &cell.left, &cell.right})
          *border = {.present = true, .width = kLine};
      }
      // Cells merged across share the width of their place; the last of them ends with it.
      const auto left = static_cast<std::size_t>(place.column);
      const int width = edges[left + static_cast<std::size_t>(place.span)] - edges[left];
      cell.right_edge =
          edges[left] + width * static_cast<int>(i + 1) / static_cast<int>(contents.size());
      cell.vertical_merge = place.covered    ? Cell::Merge::kContinued
                            : place.rows > 1 ? Cell::Merge::kFirst
                                             : Cell::Merge::kNone;
      cell.blocks = std::move(contents[i]);
      row.cells.push_back(std::move(cell));
    }
  }
  if (!whole && !places.empty()) {
    row.left_edge = edges[static_cast<std::size_t>(places.front().column)];
    row.definition = RowSource(row);
  }
  return row;
}

}  // namespace tenora
