#include "platform/richtext/write/block_writer.h"

#include <algorithm>
#include <string>

#include "platform/richtext/list_counter.h"
#include "platform/richtext/write/section_writer.h"

namespace tenora::richtext {

BlockWriter::BlockWriter(const std::vector<Font>& fonts, int default_font, int document_code_page,
                         CodePages* code_pages, SourceText* out, Escapes escapes)
    : formats_(fonts, default_font, out), out_(*out) {
  for (const Font& font : fonts) {
    const int page = CodePageOfCharset(font.charset, document_code_page);
    pages_.push_back(escapes == Escapes::kUnicode ? nullptr : &code_pages->Get(page));
  }
}

void BlockWriter::Write(const std::vector<Block>& blocks, Ending ending) {
  WriteBlocks(blocks, 0, ending == Ending::kMarked ? "par" : "");
}

void BlockWriter::WriteBlocks(const std::vector<Block>& blocks, int level,
                              std::string_view last_end) {
  ListCounter numbers;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (const auto* table = std::get_if<std::shared_ptr<Table>>(&blocks[i])) {
      WriteTable(**table, level + 1);
      numbers.EndAll();
      continue;
    }
    const auto& paragraph = std::get<Paragraph>(blocks[i]);
    WriteParagraph(paragraph, numbers.Next(paragraph.format), level,
                   i + 1 == blocks.size() ? last_end : "par");
  }
}

void BlockWriter::WriteTable(const Table& table, int level) {
  for (const Row& row : table.rows) {
    paragraph_ = nullptr;
    if (level == 1) out_.Raw(row.definition, true);
    for (const Cell& cell : row.cells)
      WriteBlocks(cell.blocks, level, level == 1 ? "cell" : "nestcell");
    if (level == 1) {
      out_.Word("row");
      out_.LineEnd();
    } else {
      out_.Raw("{\\*\\nesttableprops");
      out_.Raw(row.definition, true);
      out_.Raw("\\nestrow}{\\nonesttables\\par}");
    }
  }
  paragraph_ = nullptr;
}

void BlockWriter::WriteParagraphFormat(const ParagraphFormat& format, int number, int level) {
  if (paragraph_ != nullptr && level == level_ && *paragraph_ == format) {
    if (format.bullet.kind != Bullet::Kind::kNone) formats_.BulletText(format.bullet, number);
  } else {
    out_.Word("pard");
    if (level > 0) out_.Word("intbl");
    if (level > 1) out_.Word("itap", level);
    formats_.Paragraph(format, number);
  }
  paragraph_ = &format;
  level_ = level;
}

void BlockWriter::WriteParagraph(const Paragraph& paragraph, int number, int level,
                                 std::string_view end) {
  WriteParagraphFormat(paragraph.format, number, level);
  std::size_t offset = 0, next_mark = 0;
  for (const Run& run : paragraph.runs) WriteRun(run, paragraph, &offset, &next_mark);
  SwitchField(nullptr);
  for (; next_mark < paragraph.marks.size(); ++next_mark)
    out_.Raw(paragraph.marks[next_mark].source);
  if (end.empty()) return;
  ChangeFormat(paragraph.mark);
  // The mark of an empty paragraph is written: the section's end alone would be the paragraph's
  // before.
  if (paragraph.next_section == nullptr || paragraph.runs.empty()) {
    out_.Word(end);
    if (end == "par") out_.LineEnd();
  }
  if (paragraph.next_section == nullptr) return;
  out_.Word("sect");
  WriteSection(*paragraph.next_section, &out_);
}

void BlockWriter::WriteRun(const Run& run, const Paragraph& paragraph, std::size_t* offset,
                           std::size_t* next_mark) {
  const std::vector<Mark>& marks = paragraph.marks;
  const auto is_due = [&](std::size_t position) {
    return *next_mark < marks.size() && marks[*next_mark].offset <= position;
  };
  if (is_due(*offset)) {
    // A mark between two fields belongs to neither.
    if (fields_.empty() || run.field.get() != fields_.back()) SwitchField(nullptr);
    while (is_due(*offset)) out_.Raw(marks[(*next_mark)++].source);
  }
  SwitchField(run.field, run.format.font);
  ChangeFormat(run.format);
  std::size_t written = 0;
  if (const auto* picture = std::get_if<std::shared_ptr<const Picture>>(&run.object)) {
    out_.Raw((*picture)->source);
    written = run.text.size();
  } else if (const auto* object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object)) {
    out_.Raw((*object)->source);
    written = run.text.size();
  }
  const CodePage* page = pages_.at(static_cast<std::size_t>(run.format.font));
  while (written < run.text.size()) {
    std::size_t end = run.text.size();
    if (*next_mark < marks.size()) end = std::min(end, marks[*next_mark].offset - *offset);
    out_.Text(std::string_view(run.text).substr(written, end - written), page);
    written = end;
    if (end < run.text.size()) {
      while (is_due(*offset + written)) out_.Raw(marks[(*next_mark)++].source);
    }
  }
  *offset += run.text.size();
}

void BlockWriter::SwitchField(const std::shared_ptr<const Field>& field, int font) {
  std::vector<const Field*> wanted;
  for (const Field* f = field.get(); f != nullptr; f = f->outer.get()) wanted.push_back(f);
  std::ranges::reverse(wanted);
  const auto [open, same] = std::ranges::mismatch(fields_, wanted);
  for (auto left = fields_.end() - open; left > 0; --left) {
    out_.Raw("}}");
    format_ = outside_.back();
    outside_.pop_back();
    fields_.pop_back();
  }
  for (auto next = same; next != wanted.end(); ++next) {
    if (!format_known_) {
      CharFormat plain;
      plain.font = font;
      ChangeFormat(plain);
    }
    out_.Raw("{\\field");
    out_.Raw((*next)->flags, true);
    out_.Raw("{\\*\\fldinst{");
    out_.Raw((*next)->instruction);
    out_.Raw("}}{\\fldrslt", true);
    outside_.push_back(format_);
    fields_.push_back(*next);
  }
}

void BlockWriter::ChangeFormat(const CharFormat& format) {
  formats_.Change(format_known_ ? &format_ : nullptr, format);
  format_ = format;
  format_known_ = true;
}

}  // namespace tenora::richtext
