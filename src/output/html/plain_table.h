// A letter's table as lines of plain text, its columns side by side.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "output/html/plain_lines.h"
#include "platform/richtext/document.h"

namespace tenora::html {

// `width` in characters is that of the cell around, 0 outside tables.
std::vector<std::string> PlainTable(PlainContext& context, const richtext::Table& table,
                                    std::size_t width);

}  // namespace tenora::html
