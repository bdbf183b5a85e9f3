// Blocks as lines of plain text, for a font whose characters are equally wide.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "output/html/document_parts.h"
#include "platform/richtext/document.h"

namespace tenora::html {

struct PlainContext {
  const DocumentParts& parts;
  // The lines of cells whose column is as wide as a line. The tables around a table ask for them
  // again, which would take twice the time with each.
  std::unordered_map<const richtext::Cell*, std::vector<std::string>> cells;
};

// `width` in characters is that of the cell around, in which long lines are broken between words;
// 0 for a text outside tables, whose paragraphs stay whole. UTF-8 without line ends.
std::vector<std::string> PlainLines(PlainContext& context, std::span<const richtext::Block> blocks,
                                    std::size_t width);

// The number of characters of a text.
std::size_t CharactersIn(std::string_view utf8);

}  // namespace tenora::html
