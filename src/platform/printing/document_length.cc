#include "platform/printing/document_length.h"

#include "platform/richtext/document_text.h"
#include "platform/richtext/notes.h"

namespace tenora::printing {

int TextUnits(std::string_view utf8) {
  int units = 0;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) != 0x80) units += byte >= 0xF0 ? 2 : 1;
  }
  return units;
}

int Length(const richtext::Paragraph& paragraph) {
  int length = 1;
  for (const richtext::Run& run : paragraph.runs) {
    const bool text = std::holds_alternative<std::monostate>(run.object);
    length += text ? TextUnits(run.text) : 1;
  }
  return length;
}

int Length(const richtext::Cell& cell) {
  int length = 0;
  for (const richtext::Block& block : cell.blocks) length += Length(block);
  return length;
}

int Length(const richtext::Row& row) {
  int length = 0;
  for (const richtext::Cell& cell : row.cells) length += Length(cell);
  return length;
}

int Length(const richtext::Block& block) {
  if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) return Length(*paragraph);
  int length = 0;
  for (const richtext::Row& row : std::get<std::shared_ptr<richtext::Table>>(block)->rows) {
    length += Length(row);
  }
  return length;
}

int DocumentLength(const richtext::Document& document) {
  int length = 0;
  for (const richtext::Block& block : document.blocks) length += Length(block);
  richtext::ForEachParagraph(document.blocks, [&](const richtext::Paragraph& paragraph, auto) {
    for (const richtext::Run& run : paragraph.runs) {
      const auto* const note = run.format.hidden ? nullptr : richtext::BlocksOfNote(run);
      if (note == nullptr) continue;
      for (const richtext::Block& block : *note) length += Length(block);
    }
  });
  return length;
}

}  // namespace tenora::printing
