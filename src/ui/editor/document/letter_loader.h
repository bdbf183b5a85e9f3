// Puts a letter's text into a QTextDocument.
#pragma once

#include <QTextCursor>
#include <memory>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/tables/table_grid.h"
#include "ui/editor/text/letter_formats.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {

class LetterLoader {
 public:
  explicit LetterLoader(LetterFormats& formats) : formats_(formats) {}

  // Inserts blocks at the cursor and moves it to their end. `fresh`: the cursor's paragraph is
  // empty and becomes the first block; otherwise the first paragraph's text is appended to it.
  void Insert(QTextCursor* cursor, const std::vector<richtext::Block>& blocks, bool fresh);
  // Inserts the text, objects and bookmarks of a paragraph.
  void InsertContent(QTextCursor* cursor, const richtext::Paragraph& paragraph);
  void InsertObject(QTextCursor* cursor, InlineObject object, const richtext::CharFormat& format,
                    const std::shared_ptr<const richtext::Field>& field);
  // Keeps the cursor's paragraph visible where it is empty and follows a table: Qt gives such a
  // block no height.
  void PadBehindTable(QTextCursor* cursor);
  // Sets the formats of a paragraph and of its mark.
  void SetFormats(QTextCursor* cursor, const richtext::Paragraph& paragraph);

 private:
  void InsertRun(QTextCursor* cursor, const richtext::Run& run, std::string_view text);
  void InsertText(QTextCursor* cursor, const richtext::Run& run, const QString& text);
  struct Spaces {
    int before = 0, after = 0;  // of the paragraphs before and after a table, twips
  };
  void InsertTable(QTextCursor* cursor, const richtext::Table& table, const TableGrid& grid,
                   Spaces spaces);
  void FillCell(QTextTable* table, const richtext::Table& source, const TableGrid& grid,
                std::size_t row, const GridCell& cell);

  LetterFormats& formats_;
  std::vector<std::shared_ptr<const richtext::Row>> rows_;  // of the table being inserted
};

}  // namespace tenora
