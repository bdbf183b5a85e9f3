// The RTF source of table rows that the editor makes or changes.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora {

// The definition of a row as RTF source, made from its members.
std::string RowSource(const richtext::Row& row);

// The control words of a cell's definition that say how it is merged with others.
std::string CellMergeWords(const richtext::Cell& cell);

// A table of columns of equal width (`width` in twips for all), with borders around its cells.
richtext::Table NewTable(int rows, int columns, int width, const richtext::CharFormat& format);

}  // namespace tenora
