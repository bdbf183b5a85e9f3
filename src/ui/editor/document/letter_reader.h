// Reads a letter back out of the QTextDocument that it was edited in.
#pragma once

#include <QTextBlock>
#include <QTextFrame>
#include <QTextTable>
#include <memory>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/tables/table_grid.h"
#include "ui/editor/text/letter_formats.h"
#include "ui/editor/text/position_map.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {

class LetterReader {
 public:
  explicit LetterReader(LetterFormats& formats) : formats_(formats) {}

  std::vector<richtext::Block> Read(const QTextDocument& document);
  const PositionMap& positions() const { return positions_; }

  // The letter's table that one of the document's tables was read into. Several of the document's
  // tables may be one in the letter: the grid begins at the row `first_row`.
  struct FoundTable {
    const richtext::Table* table = nullptr;  // null: not found, or with empty rows
    TableGrid grid;
  };
  // Has the next Read look for the table.
  void LookFor(const QTextTable* table) { wanted_ = table; }
  const FoundTable& Found() const { return found_; }

 private:
  struct Place {
    int column = 0, span = 1, rows = 1;
    std::shared_ptr<const CellData> data;
    const CellPart* part = nullptr;
    bool covered = false;
    bool lined = false;  // in an HTML table with borders
    std::vector<richtext::Block> blocks;
  };

  std::vector<richtext::Block> ReadBlocks(QTextFrame::iterator it);
  void AddBlocks(QTextFrame::iterator it, std::vector<richtext::Block>* blocks);
  richtext::Paragraph ReadParagraph(const QTextBlock& block);
  void ReadFragment(const QTextFragment& fragment, richtext::Paragraph* paragraph);
  void ReadObject(const InlineObject& object, const QTextCharFormat& format,
                  richtext::Paragraph* paragraph);
  void AddRun(richtext::Run run, richtext::Paragraph* paragraph);
  void ReadTable(const QTextTable& table, richtext::Table* read);
  std::vector<Place> ReadPlaces(const QTextTable& table, int row);
  richtext::Row RowOf(std::vector<Place> places, const std::vector<int>& edges);

  LetterFormats& formats_;
  PositionMap positions_;
  const QTextTable* wanted_ = nullptr;
  FoundTable found_;
  int depth_ = 0;           // of tables
  std::size_t length_ = 0;  // bytes of the paragraph being read
};

}  // namespace tenora
