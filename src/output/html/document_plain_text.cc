#include "output/html/document_plain_text.h"

#include <span>
#include <string_view>

#include "output/html/document_parts.h"
#include "output/html/plain_lines.h"

namespace tenora::html {

std::string DocumentPlainText(const richtext::Document& document) {
  const DocumentParts parts = PartsOf(document);
  std::string text;
  std::string_view line_end;
  for (const std::span<const richtext::Block> part :
       {std::span<const richtext::Block>(parts.header), parts.text,
        std::span<const richtext::Block>(parts.footer)}) {
    if (part.empty()) continue;
    if (!text.empty()) text += "\r\n";  // an empty line between the parts
    for (const std::string& line : PlainLines(document, part, 0)) {
      text.append(line_end).append(line);
      line_end = "\r\n";
    }
  }
  return text;
}

}  // namespace tenora::html
