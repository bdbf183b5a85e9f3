#include "platform/printing/layout/note_marks.h"

#include "platform/printing/document_length.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/notes.h"

namespace tenora::printing {

Notes::Notes(const richtext::Document& document) : marks_(document.page) {
  int position = 0;
  for (const richtext::Block& block : document.blocks) position += Length(block);
  const int text_end = position;
  position = 0;
  richtext::ForEachParagraph(document.blocks, [&](const richtext::Paragraph& paragraph, auto) {
    int at = position;
    for (const richtext::Run& run : paragraph.runs) {
      const auto* const blocks = run.format.hidden ? nullptr : richtext::BlocksOfNote(run);
      if (blocks != nullptr)
        (richtext::IsEndnote(run) ? endnotes_ : footnotes_).push_back({blocks, at, 0});
      at += std::holds_alternative<std::monostate>(run.object) ? TextUnits(run.text) : 1;
    }
    position += Length(paragraph);
  });
  position = text_end;
  for (std::vector<Note>* const notes : {&endnotes_, &footnotes_}) {
    for (Note& note : *notes) {
      note.position = position;
      for (const richtext::Block& block : *note.blocks) position += Length(block);
    }
  }
  marks_.Add(document.blocks);
}

}  // namespace tenora::printing
