#include "platform/richtext/rtf_writer.h"

#include <utility>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/write/block_writer.h"
#include "platform/richtext/write/section_writer.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {
namespace {

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
  if (page.width != 0) out->Word("paperw", page.width);
  if (page.height != 0) out->Word("paperh", page.height);
  // All or none: beside one that is named, the others would have their usual values.
  if (page.left != 0 || page.right != 0 || page.top != 0 || page.bottom != 0) {
    out->Word("margl", page.left);
    out->Word("margr", page.right);
    out->Word("margt", page.top);
    out->Word("margb", page.bottom);
  }
  if (page.landscape) out->Word("landscape");
  if (document.default_tab != 720) out->Word("deftab", document.default_tab);
  WritePageBorders(page, out);
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

std::string WriteHeadGroup(const Document& document, const HeadGroup& group,
                           const std::vector<Block>& blocks) {
  SourceText out;
  CodePages code_pages;
  out.Raw("{");
  out.Word(group.word);
  BlockWriter(document.fonts, document.default_font, document.code_page, &code_pages, &out)
      .Write(blocks, BlockWriter::Ending::kMarked);
  out.Raw("}");
  return out.Take();
}

}  // namespace tenora::richtext
