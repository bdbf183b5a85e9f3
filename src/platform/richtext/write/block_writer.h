// Writes paragraphs and tables as RTF in the canonical form.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/richtext/write/format_writer.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

// Writes blocks into a document's source; carried-through source is written as it is.
class BlockWriter {
 public:
  // How the text ends: a header's last paragraph has its mark, a footnote's has none.
  enum class Ending { kMarked, kOpen };

  BlockWriter(const std::vector<Font>& fonts, int default_font, int document_code_page,
              CodePages* code_pages, SourceText* out, Escapes escapes = Escapes::kCodePage);

  void Write(const std::vector<Block>& blocks, Ending ending);

 private:
  void WriteBlocks(const std::vector<Block>& blocks, int level, std::string_view last_end);
  void WriteTable(const Table& table, int level);
  // `number` is the paragraph's in its list.
  void WriteParagraph(const Paragraph& paragraph, int number, int level, std::string_view end);
  void WriteParagraphFormat(const ParagraphFormat& format, int number, int level);
  void WriteRun(const Run& run, const Paragraph& paragraph, std::size_t* offset,
                std::size_t* next_mark);
  // Closes and opens fields; `font` is that of the text in the new one.
  void SwitchField(const std::shared_ptr<const Field>& field, int font = 0);
  void ChangeFormat(const CharFormat& format);

  FormatWriter formats_;
  std::vector<const CodePage*> pages_;  // by font position; null: all as Unicode
  SourceText& out_;

  CharFormat format_;  // in force in the source
  bool format_known_ = false;
  const ParagraphFormat* paragraph_ = nullptr;
  int level_ = -1;
  std::vector<const Field*> fields_;
  std::vector<CharFormat> outside_;  // the format around each open field
};

}  // namespace tenora::richtext
