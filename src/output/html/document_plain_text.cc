#include "output/html/document_plain_text.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "output/html/document_parts.h"
#include "output/html/plain_lines.h"

namespace tenora::html {

namespace {

constexpr std::string_view kNotesLine = "____________________";

}  // namespace

std::string DocumentPlainText(const richtext::Document& document) {
  const DocumentParts parts = PartsOf(document);
  PlainContext context{parts, {}};
  std::string text;
  const auto add_part = [&](const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    if (!text.empty()) text += "\r\n\r\n";  // an empty line between the parts
    std::string_view line_end;
    for (const std::string& line : lines) {
      text.append(line_end).append(line);
      line_end = "\r\n";
    }
  };
  add_part(PlainLines(context, parts.header, 0));
  add_part(PlainLines(context, parts.text, 0));
  for (const TextBox& box : parts.below)
    add_part(PlainLines(context, WithoutEmptyEnds(box.figure->blocks), 0));
  std::vector<std::string> notes;
  for (const auto& note : parts.notes) {
    if (notes.empty()) notes.emplace_back(kNotesLine);
    std::ranges::move(PlainLines(context, note, 0), std::back_inserter(notes));
  }
  add_part(notes);
  add_part(PlainLines(context, parts.footer, 0));
  return text;
}

}  // namespace tenora::html
