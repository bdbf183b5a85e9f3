// What a letter's QTextDocument carries beside the looks. The letter's own formats stand as they
// are in properties; the properties that Qt draws from are derived from them, never read back,
// except for text that came from elsewhere and has none of these.
#pragma once

#include <QMetaType>
#include <QTextFormat>
#include <memory>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

enum LetterProperty {
  kCharProperty = QTextFormat::UserProperty + 1,  // richtext::CharFormat; numbers of the letter
  kFieldProperty,                                 // std::shared_ptr<const richtext::Field>
  kObjectProperty,                                // std::shared_ptr<const InlineObject>
  kParagraphProperty,                             // richtext::ParagraphFormat
  kFillerProperty,                                // bool: a block that only Qt needs, before tables
  kTableProperty,                                 // std::shared_ptr<const TableData>
  kCellProperty,                                  // std::shared_ptr<const CellData>
  kSerialProperty,  // int, differs for every object and cell: Qt looks formats up by such numbers
};

// The object type of every U+FFFC in a letter.
inline constexpr int kLetterObject = QTextFormat::UserObject + 1;

// One character of the QTextDocument that stands for something else of the letter.
struct InlineObject {
  enum class Kind {
    kPicture,    // a run with a picture
    kVerbatim,   // a run with something the editor cannot edit
    kHidden,     // runs of hidden text
    kPageBreak,  // "\f"
    kCharacter,  // a character that Qt has another meaning for, or of a symbol font
    kMark,       // a bookmark or comment
    kPad,        // nothing: keeps an empty line behind a table visible
  };
  Kind kind = Kind::kPad;
  std::vector<richtext::Run> runs;  // kPad and kMark: none
  std::string mark_source;          // kMark
  std::string shown_text;           // kCharacter
};

// The part of a row that a table cell stands for. A cell merged across stands for several.
struct CellPart {
  std::shared_ptr<const richtext::Row> row;  // its cells without their blocks
  int first = 0, count = 1;
  // What the cells of the part hold that is not shown: those behind the first in the topmost part,
  // all in the parts below.
  std::vector<std::vector<richtext::Block>> kept;
};

struct CellData {
  std::vector<CellPart> parts;  // one for each row that the cell covers; none: not in the letter
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
