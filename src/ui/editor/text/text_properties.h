// The properties in which a letter's QTextDocument carries the letter's own formats. What Qt draws
// is derived from them and not read back, except for text from elsewhere, which has none of them.
#pragma once

#include <QMetaType>
#include <QTextFormat>
#include <memory>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

enum LetterProperty {
  kCharProperty = QTextFormat::UserProperty + 1,  // richtext::CharFormat; the letter's numbers
  kFieldProperty,                                 // std::shared_ptr<const richtext::Field>
  kObjectProperty,                                // std::shared_ptr<const InlineObject>
  kParagraphProperty,                             // richtext::ParagraphFormat
  kFillerProperty,                                // bool: a block that only Qt needs, before tables
  kTableProperty,                                 // std::shared_ptr<const TableData>
  kCellProperty,                                  // std::shared_ptr<const CellData>
  kSerialProperty,  // int, unique for each object and cell; Qt looks formats up by numbers
};

// The object type of every U+FFFC in a letter.
inline constexpr int kLetterObject = QTextFormat::UserObject + 1;

// What one U+FFFC of the QTextDocument represents in the letter.
struct InlineObject {
  enum class Kind {
    kPicture,    // a run with a picture
    kVerbatim,   // a run with something the editor cannot edit
    kHidden,     // runs of hidden text
    kPageBreak,  // "\f"
    kCharacter,  // a character that Qt has another meaning for, or of a symbol font
    kMark,       // a bookmark or comment
    kSection,    // ends a section with its paragraph, wherever it is in that
    kPad,        // nothing: keeps an empty line after a table visible
  };
  Kind kind = Kind::kPad;
  std::vector<richtext::Run> runs;  // empty for kPad, kMark and kSection
  std::string mark_source;          // kMark
  std::string shown_text;           // kCharacter
  std::shared_ptr<const richtext::Section> next_section = nullptr;  // kSection: that begins then
};

// The cells of one row that a cell of Qt's table shows; several where they are merged across.
struct CellPart {
  std::shared_ptr<const richtext::Row> row;  // its cells without their blocks
  int first = 0, count = 1;
  // The contents of the cells that are not shown: in the topmost part those after the first, in the
  // parts below all.
  std::vector<std::vector<richtext::Block>> kept;
};

struct CellData {
  std::vector<CellPart> parts;  // one for each row that the cell spans; empty: not in the letter
};

struct TableData {
  std::vector<int> edges;  // of the columns, twips; one more than columns
};

template <class T>
std::shared_ptr<const T> SharedProperty(const QTextFormat& format, int property) {
  return format.property(property).value<std::shared_ptr<const T>>();
}

}  // namespace tenora

Q_DECLARE_METATYPE(tenora::richtext::CharFormat)
Q_DECLARE_METATYPE(tenora::richtext::ParagraphFormat)
Q_DECLARE_METATYPE(std::shared_ptr<const tenora::richtext::Field>)
Q_DECLARE_METATYPE(std::shared_ptr<const tenora::InlineObject>)
Q_DECLARE_METATYPE(std::shared_ptr<const tenora::TableData>)
Q_DECLARE_METATYPE(std::shared_ptr<const tenora::CellData>)
