#include "ui/editor/document/letter_loader.h"

#include <QTextBlock>
#include <QTextTable>
#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/richtext/border_kinds.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/picture_look.h"
#include "ui/editor/text/paragraph_mark.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Cell;
using richtext::Paragraph;
using richtext::Row;
using richtext::Run;
using richtext::Table;

constexpr int kNarrowestColumn = 60;

// Characters that a QTextDocument uses as line, paragraph and frame separators.
bool HasMeaningToQt(char16_t c) {
  return c == QChar::LineSeparator || c == QChar::ParagraphSeparator || c == 0xFDD0 || c == 0xFDD1;
}

Row WithoutBlocks(const Row& row) {
  Row result = row;
  for (Cell& cell : result.cells) cell.blocks.clear();
  return result;
}

QTextTableFormat TableFormat(const Table& source, const TableGrid& grid) {
  QTextTableFormat format;
  auto data = std::make_shared<TableData>();
  data->edges = grid.edges;
  format.setProperty(kTableProperty,
                     QVariant::fromValue(std::shared_ptr<const TableData>(std::move(data))));
  format.setCellSpacing(0);
  format.setCellPadding(0);
  format.setBorder(0);
  format.setBorderCollapse(true);
  const Row& first = source.rows[grid.first_row];
  if (first.alignment == richtext::Alignment::kCentre) format.setAlignment(Qt::AlignHCenter);
  if (first.alignment == richtext::Alignment::kRight) format.setAlignment(Qt::AlignRight);
  if (first.alignment == richtext::Alignment::kLeft || richtext::IsJustified(first.alignment))
    format.setLeftMargin(PixelsOfTwips(grid.edges.front()));
  QList<QTextLength> widths;
  for (int c = 0; c < grid.columns(); ++c) {
    const auto i = static_cast<std::size_t>(c);
    const int width = std::max(grid.edges[i + 1] - grid.edges[i], kNarrowestColumn);
    widths.append(QTextLength(QTextLength::FixedLength, PixelsOfTwips(width)));
  }
  format.setColumnWidthConstraints(widths);
  return format;
}

// A number that differs from object to object.
int SerialOf(const void* object) {
  return static_cast<int>(reinterpret_cast<std::uintptr_t>(object) >> 4 & 0x7fffffff);
}

// Text goes on beside a picture that stands so.
QTextFrameFormat::Position PositionOf(const InlineObject& object) {
  if (object.kind != InlineObject::Kind::kVerbatim || object.runs.size() != 1)
    return QTextFrameFormat::InFlow;
  const auto look = richtext::LookOf(object.runs.front());
  if (look && look->place == richtext::PicturePlace::kLeft) return QTextFrameFormat::FloatLeft;
  if (look && look->place == richtext::PicturePlace::kRight) return QTextFrameFormat::FloatRight;
  return QTextFrameFormat::InFlow;
}

// How a cell looks.
QTextTableCellFormat CellFormat(const LetterFormats& formats, const CellData& data) {
  QTextTableCellFormat format;
  const auto kept = std::make_shared<const CellData>(data);
  format.setProperty(kCellProperty, QVariant::fromValue(kept));
  format.setProperty(kSerialProperty, SerialOf(kept.get()));
  if (data.parts.empty()) return format;
  const CellPart& top = data.parts.front();
  const auto first = static_cast<std::size_t>(top.first);
  const Cell& cell = top.row->cells[first];
  const Cell& right_cell = top.row->cells[first + static_cast<std::size_t>(top.count) - 1];
  const CellPart& bottom = data.parts.back();
  const Cell& bottom_cell = bottom.row->cells[static_cast<std::size_t>(bottom.first)];

  const auto width = [](const richtext::Border& border) {
    const int lines = richtext::HasSeveralLines(border.kind) ? 3 : 1;
    return border.present ? lines * std::max(1.0, PixelsOfTwips(border.width)) : 0.0;
  };
  const auto brush = [&](const richtext::Border& border) {
    const QColor colour = formats.ColourAt(border.colour);
    return QBrush(colour.isValid() ? colour : QColor(Qt::black));
  };
  const auto style = [](const richtext::Border& border) {
    using Kind = richtext::Border::Kind;
    if (!border.present) return QTextFrameFormat::BorderStyle_None;
    if (richtext::HasSeveralLines(border.kind)) return QTextFrameFormat::BorderStyle_Double;
    if (border.kind == Kind::kDotted) return QTextFrameFormat::BorderStyle_Dotted;
    if (border.kind == Kind::kDashed) return QTextFrameFormat::BorderStyle_Dashed;
    if (border.kind == Kind::kDashDot) return QTextFrameFormat::BorderStyle_DotDash;
    if (border.kind == Kind::kDashDotDot) return QTextFrameFormat::BorderStyle_DotDotDash;
    return QTextFrameFormat::BorderStyle_Solid;
  };
  format.setTopBorder(width(cell.top));
  format.setTopBorderBrush(brush(cell.top));
  format.setTopBorderStyle(style(cell.top));
  format.setLeftBorder(width(cell.left));
  format.setLeftBorderBrush(brush(cell.left));
  format.setLeftBorderStyle(style(cell.left));
  format.setRightBorder(width(right_cell.right));
  format.setRightBorderBrush(brush(right_cell.right));
  format.setRightBorderStyle(style(right_cell.right));
  format.setBottomBorder(width(bottom_cell.bottom));
  format.setBottomBorderBrush(brush(bottom_cell.bottom));
  format.setBottomBorderStyle(style(bottom_cell.bottom));
  const int gap = std::max(0, top.row->half_gap);
  const auto padding = [&](int own, int otherwise) {
    return PixelsOfTwips(std::clamp(own < 0 ? otherwise : own, 0, 1440));
  };
  format.setTopPadding(padding(cell.padding.top, 0));
  format.setBottomPadding(padding(cell.padding.bottom, 0));
  format.setLeftPadding(padding(cell.padding.left, gap));
  format.setRightPadding(padding(cell.padding.right, gap));
  if (cell.vertical_align == Cell::VerticalAlign::kCentre)
    format.setVerticalAlignment(QTextCharFormat::AlignMiddle);
  if (cell.vertical_align == Cell::VerticalAlign::kBottom)
    format.setVerticalAlignment(QTextCharFormat::AlignBottom);
  if (const QColor colour = formats.ColourAt(cell.shading); colour.isValid())
    format.setBackground(colour);
  return format;
}

}  // namespace

void LetterLoader::Insert(QTextCursor* cursor, const std::vector<Block>& blocks, bool fresh) {
  bool begun = !fresh;  // the block at the cursor is in use
  bool first = true, behind_table = false;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const Block& block = blocks[i];
    if (const auto* paragraph = std::get_if<Paragraph>(&block)) {
      const bool joins = first && begun;
      if (begun && !joins) cursor->insertBlock();
      if (!joins) SetFormats(cursor, *paragraph);
      InsertContent(cursor, *paragraph);
      // Qt does not know a table yet in the edit that inserts it.
      if (behind_table && cursor->block().length() == 1)
        InsertObject(cursor, {}, paragraph->mark, nullptr);
      begun = true;
      behind_table = false;
    } else {
      const auto& table = *std::get<std::shared_ptr<Table>>(block);
      for (const TableGrid& grid : MakeGrids(table)) {
        if (!begun) {
          QTextBlockFormat filler;
          filler.setProperty(kFillerProperty, true);
          cursor->setBlockFormat(filler);
          QTextCharFormat mark = cursor->blockCharFormat();
          mark.merge(formats_.Mark({.font = formats_.head().default_font}));
          SetParagraphMark(cursor, mark);
        }
        Spaces spaces;
        const bool last = grid.first_row + grid.rows.size() == table.rows.size();
        if (const auto* before = i == 0 ? nullptr : std::get_if<Paragraph>(&blocks[i - 1]))
          spaces.before = grid.first_row == 0 ? before->format.space_after : 0;
        if (const auto* after =
                i + 1 < blocks.size() ? std::get_if<Paragraph>(&blocks[i + 1]) : nullptr)
          spaces.after = last ? after->format.space_before : 0;
        InsertTable(cursor, table, grid, spaces);
        begun = false;
      }
      behind_table = true;
    }
    first = false;
  }
}

void LetterLoader::SetFormats(QTextCursor* cursor, const Paragraph& paragraph) {
  cursor->setBlockFormat(formats_.Paragraph(paragraph.format));
  QTextCharFormat mark = cursor->blockCharFormat();
  mark.merge(formats_.Mark(paragraph.mark));
  SetParagraphMark(cursor, mark);
}

void LetterLoader::InsertContent(QTextCursor* cursor, const Paragraph& paragraph) {
  std::size_t offset = 0, next_mark = 0;
  const auto insert_marks = [&](std::size_t up_to, const Run* run) {
    for (; next_mark < paragraph.marks.size() && paragraph.marks[next_mark].offset <= up_to;
         ++next_mark) {
      InlineObject object;
      object.kind = InlineObject::Kind::kMark;
      object.mark_source = paragraph.marks[next_mark].source;
      InsertObject(cursor, std::move(object), run == nullptr ? paragraph.mark : run->format,
                   nullptr);
    }
  };
  for (const Run& run : paragraph.runs) {
    std::size_t done = 0;
    insert_marks(offset, &run);
    while (done < run.text.size()) {
      std::size_t end = run.text.size();
      if (next_mark < paragraph.marks.size())
        end = std::min(end, paragraph.marks[next_mark].offset - offset);
      InsertRun(cursor, run, std::string_view(run.text).substr(done, end - done));
      done = end;
      if (done < run.text.size()) insert_marks(offset + done, &run);
    }
    offset += run.text.size();
  }
  insert_marks(static_cast<std::size_t>(-1), nullptr);
  formats_.FitLines(cursor);
  if (paragraph.next_section == nullptr) return PadBehindTable(cursor);
  InlineObject section_end;
  section_end.kind = InlineObject::Kind::kSection;
  section_end.next_section = paragraph.next_section;
  InsertObject(cursor, std::move(section_end), paragraph.mark, nullptr);
}

void LetterLoader::PadBehindTable(QTextCursor* cursor) {
  const QTextBlock block = cursor->block(), before = block.previous();
  if (block.length() != 1 || !before.isValid()) return;
  if (block.blockFormat().hasProperty(kFillerProperty)) return;
  const QTextTable* table = QTextCursor(before).currentTable();
  if (table == nullptr || table->lastPosition() + 1 != block.position()) return;
  InsertObject(cursor, {}, formats_.CharOf(block.charFormat()), nullptr);
}

void LetterLoader::InsertRun(QTextCursor* cursor, const Run& run, std::string_view text) {
  using Kind = InlineObject::Kind;
  Run part = run;
  part.text = text;
  if (run.format.hidden || run.object.index() != 0) {
    const Kind kind = run.format.hidden         ? Kind::kHidden
                      : run.object.index() == 1 ? Kind::kPicture
                                                : Kind::kVerbatim;
    return InsertObject(cursor, {kind, {std::move(part)}, {}, {}}, run.format, run.field);
  }
  const QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  const bool symbols = formats_.IsSymbol(run.format.font);
  QString plain;
  const auto flush = [&] {
    if (!plain.isEmpty()) InsertText(cursor, run, plain);
    plain.clear();
  };
  for (const QChar c : shown) {
    if (c == QLatin1Char('\v')) {
      plain += QChar::LineSeparator;
    } else if (c == QLatin1Char('\f')) {
      flush();
      part.text = "\f";
      InsertObject(cursor, {Kind::kPageBreak, {part}, {}, {}}, run.format, run.field);
    } else if (HasMeaningToQt(c.unicode()) || (symbols && !c.isSpace() && !c.isSurrogate())) {
      flush();
      part.text = QString(c).toStdString();
      InsertObject(cursor, {Kind::kCharacter, {part}, {}, formats_.ShownSymbol(run.format.font, c)},
                   run.format, run.field);
    } else {
      plain += c;
    }
  }
  flush();
}

void LetterLoader::InsertText(QTextCursor* cursor, const Run& run, const QString& text) {
  QTextCharFormat format = formats_.Char(run.format);
  if (run.field) format.setProperty(kFieldProperty, QVariant::fromValue(run.field));
  cursor->insertText(text, format);
}

void LetterLoader::InsertObject(QTextCursor* cursor, InlineObject object,
                                const richtext::CharFormat& format,
                                const std::shared_ptr<const richtext::Field>& field) {
  QTextCharFormat shown = formats_.Char(format);
  shown.setObjectType(kLetterObject);
  const auto kept = std::make_shared<const InlineObject>(std::move(object));
  shown.setProperty(kObjectProperty, QVariant::fromValue(kept));
  shown.setProperty(kSerialProperty, SerialOf(kept.get()));
  if (field) shown.setProperty(kFieldProperty, QVariant::fromValue(field));
  const QTextFrameFormat::Position position = PositionOf(*kept);
  if (position == QTextFrameFormat::InFlow)
    cursor->insertText(QString(QChar::ObjectReplacementCharacter), shown);
  else
    cursor->insertImage(shown.toImageFormat(), position);
}

void LetterLoader::InsertTable(QTextCursor* cursor, const Table& source, const TableGrid& grid,
                               Spaces spaces) {
  // Qt ignores the space between a paragraph and a table, so the table's margins include it.
  QTextTableFormat format = TableFormat(source, grid);
  format.setTopMargin(PixelsOfTwips(spaces.before));
  format.setBottomMargin(PixelsOfTwips(spaces.after));
  QTextTable* table =
      cursor->insertTable(static_cast<int>(grid.rows.size()), grid.columns(), format);
  for (std::size_t row = 0; row < grid.rows.size(); ++row) {
    for (const GridCell& cell : grid.rows[row]) {
      if (!cell.covered && (cell.span > 1 || cell.rows > 1))
        table->mergeCells(static_cast<int>(row), cell.column, cell.rows, cell.span);
    }
  }
  std::vector<std::shared_ptr<const Row>> outer = std::move(rows_);
  rows_.clear();
  for (std::size_t row = 0; row < grid.rows.size(); ++row) {
    rows_.push_back(std::make_shared<const Row>(WithoutBlocks(source.rows[grid.first_row + row])));
  }
  for (std::size_t row = 0; row < grid.rows.size(); ++row) {
    for (const GridCell& cell : grid.rows[row]) {
      if (!cell.covered) FillCell(table, source, grid, row, cell);
    }
  }
  rows_ = std::move(outer);
  cursor->setPosition(table->lastPosition() + 1);
}

void LetterLoader::FillCell(QTextTable* table, const Table& source, const TableGrid& grid,
                            std::size_t row, const GridCell& cell) {
  CellData data;
  for (int below = 0; below < cell.rows && !cell.absent; ++below) {
    const std::size_t r = row + static_cast<std::size_t>(below);
    const auto part_cell =
        std::find_if(grid.rows[r].begin(), grid.rows[r].end(),
                     [&](const GridCell& other) { return other.column == cell.column; });
    CellPart part{rows_[r], part_cell->first, part_cell->count, {}};
    const auto& cells = source.rows[grid.first_row + r].cells;
    for (int i = below == 0 ? 1 : 0; i < part.count; ++i)
      part.kept.push_back(cells[static_cast<std::size_t>(part.first + i)].blocks);
    data.parts.push_back(std::move(part));
  }
  QTextTableCell target = table->cellAt(static_cast<int>(row), cell.column);
  QTextTableCellFormat format = CellFormat(formats_, data);
  if (cell.absent) return target.setFormat(format);
  const auto& blocks =
      source.rows[grid.first_row + row].cells[static_cast<std::size_t>(cell.first)].blocks;
  // Qt ignores the space before the first paragraph of a cell and after its last.
  if (const auto* first = std::get_if<Paragraph>(&blocks.front()))
    format.setTopPadding(format.topPadding() + PixelsOfTwips(first->format.space_before));
  if (const auto* last = std::get_if<Paragraph>(&blocks.back()))
    format.setBottomPadding(format.bottomPadding() + PixelsOfTwips(last->format.space_after));
  target.setFormat(format);
  QTextCursor inside = target.firstCursorPosition();
  Insert(&inside, blocks, true);
}

}  // namespace tenora
