#include "platform/richtext/writer.h"

#include <algorithm>
#include <utility>

namespace tenora::richtext {
namespace {

// Paragraphs of one list count on only while they follow each other.
bool SameList(const Bullet& left, const Bullet& right) {
  return left.kind != Bullet::Kind::kNone && left == right;
}

void WriteFontTable(const std::vector<Font>& fonts, CodePages* code_pages, int document_code_page,
                    SourceText* out) {
  out->Raw("{\\fonttbl");
  for (std::size_t i = 0; i < fonts.size(); ++i) {
    const Font& font = fonts[i];
    out->Raw("{");
    out->Word("f", static_cast<int>(i));
    out->Word("f" + font.family);
    if (font.pitch != 0) out->Word("fprq", font.pitch);
    out->Word("fcharset", font.charset);
    const int page = CodePageOfCharset(font.charset, document_code_page);
    out->Text(font.name, page == kSymbolCodePage ? nullptr : &code_pages->Get(page));
    out->Raw(";}");
  }
  out->Raw("}");
  out->LineEnd();
}

void WriteColourTable(const std::vector<Colour>& colours, SourceText* out) {
  if (colours.size() < 2) return;
  out->Raw("{\\colortbl ;");
  for (std::size_t i = 1; i < colours.size(); ++i) {
    out->Word("red", colours[i].red);
    out->Word("green", colours[i].green);
    out->Word("blue", colours[i].blue);
    out->Raw(";");
  }
  out->Raw("}");
  out->LineEnd();
}

void WriteInfo(const Document& document, SourceText* out) {
  if (document.title.empty() && document.info.empty()) return;
  out->Raw("{\\info");
  if (!document.title.empty()) {
    out->Raw("{\\title", true);
    out->Text(document.title, nullptr);
    out->Raw("}");
  }
  for (const std::string& group : document.info) out->Raw(group);
  out->Raw("}");
  out->LineEnd();
}

void WritePageSetup(const Document& document, SourceText* out) {
  const PageSetup& page = document.page;
  const std::size_t before = out->text().size();
  const std::pair<const char*, int> lengths[] = {{"paperw", page.width}, {"paperh", page.height},
                                                 {"margl", page.left},   {"margr", page.right},
                                                 {"margt", page.top},    {"margb", page.bottom}};
  for (const auto& [word, value] : lengths) {
    if (value != 0) out->Word(word, value);
  }
  if (page.landscape) out->Word("landscape");
  if (document.default_tab != 720) out->Word("deftab", document.default_tab);
  out->Raw(page.other_words, true);
  if (out->text().size() != before) out->LineEnd();
}

}  // namespace

std::string WriteRtf(const Document& document, Escapes escapes) {
  SourceText out;
  CodePages code_pages;
  out.Raw("{\\rtf1\\ansi");
  out.Word("ansicpg", document.code_page);
  out.Word("deff", document.default_font);
  if (document.default_language != 0) out.Word("deflang", document.default_language);
  WriteFontTable(document.fonts, &code_pages, document.code_page, &out);
  WriteColourTable(document.colours, &out);
  WriteInfo(document, &out);
  WritePageSetup(document, &out);
  for (const HeadGroup& group : document.head_groups) {
    out.Raw(group.source);
    out.LineEnd();
  }
  out.Raw("\\viewkind4\\uc1", true);
  BlockWriter(document.fonts, document.default_font, document.code_page, &code_pages, &out, escapes)
      .Write(document.blocks, BlockWriter::Ending::kMarked);
  out.Raw("}");
  out.LineEnd();
  return out.Take();
}

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
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (const auto* table = std::get_if<std::shared_ptr<Table>>(&blocks[i]))
      WriteTable(**table, level + 1);
    else
      WriteParagraph(std::get<Paragraph>(blocks[i]), level,
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

void BlockWriter::WriteParagraphFormat(const ParagraphFormat& format, int level) {
  const bool counts_on = paragraph_ != nullptr && SameList(paragraph_->bullet, format.bullet);
  item_ = counts_on ? item_ + 1 : 0;
  const int number = format.bullet.start + item_;
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

void BlockWriter::WriteParagraph(const Paragraph& paragraph, int level, std::string_view end) {
  WriteParagraphFormat(paragraph.format, level);
  std::size_t offset = 0, next_mark = 0;
  for (const Run& run : paragraph.runs) WriteRun(run, paragraph, &offset, &next_mark);
  SwitchField(nullptr);
  for (; next_mark < paragraph.marks.size(); ++next_mark)
    out_.Raw(paragraph.marks[next_mark].source);
  if (end.empty()) return;
  ChangeFormat(paragraph.mark);
  out_.Word(end);
  if (end == "par") out_.LineEnd();
}

void BlockWriter::WriteRun(const Run& run, const Paragraph& paragraph, std::size_t* offset,
                           std::size_t* next_mark) {
  const std::vector<Mark>& marks = paragraph.marks;
  const auto is_due = [&](std::size_t position) {
    return *next_mark < marks.size() && marks[*next_mark].offset <= position;
  };
  if (is_due(*offset)) {
    // A mark between two fields stands outside both.
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
