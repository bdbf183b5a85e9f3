#include "platform/richtext/document_text.h"

#include <algorithm>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

template <class Blocks, class Visit>
void Walk(Blocks& blocks, const Visit& visit, ParagraphEnd last_end) {
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (auto* paragraph = std::get_if<Paragraph>(&blocks[i])) {
      visit(*paragraph, i + 1 == blocks.size() ? last_end : ParagraphEnd::kParagraph);
      continue;
    }
    for (auto& row : std::get<std::shared_ptr<Table>>(blocks[i])->rows) {
      for (std::size_t cell = 0; cell < row.cells.size(); ++cell)
        Walk(row.cells[cell].blocks, visit,
             cell + 1 == row.cells.size() ? ParagraphEnd::kRow : ParagraphEnd::kCell);
    }
  }
}

// The text with `line_end` for every end but that of the last paragraph.
std::string Collect(const std::vector<Block>& blocks, std::string_view line_end) {
  std::string text;
  std::string_view end;
  ForEachParagraph(blocks, [&](const Paragraph& paragraph, ParagraphEnd paragraph_end) {
    text += end;
    for (const Run& run : paragraph.runs) {
      for (const char c : run.text) {
        if (c == '\v')
          text += line_end;
        else
          text += c;
      }
    }
    end = paragraph_end == ParagraphEnd::kCell ? std::string_view("\t") : line_end;
  });
  return text;
}

bool Shows(const Run& run) {
  if (run.format.hidden) return false;
  if (!std::holds_alternative<std::monostate>(run.object)) return !IsColumnBreak(run);
  return run.format.underline != Underline::kNone || run.format.highlight > 0 ||
         run.text.find_first_not_of(" \t\v\f\r\n") != std::string::npos;
}

}  // namespace

void ForEachParagraph(const std::vector<Block>& blocks,
                      const std::function<void(const Paragraph&, ParagraphEnd)>& visit) {
  Walk(blocks, visit, ParagraphEnd::kParagraph);
}

void ForEachParagraph(std::vector<Block>& blocks,
                      const std::function<void(Paragraph&, ParagraphEnd)>& visit) {
  Walk(blocks, visit, ParagraphEnd::kParagraph);
}

std::string PlainText(const std::vector<Block>& blocks) { return Collect(blocks, "\r\n"); }

std::u16string PositionText(const std::vector<Block>& blocks) {
  return ToUtf16(Collect(blocks, "\n"));
}

bool IsColumnBreak(const Run& run) {
  const auto* const object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object);
  return object != nullptr && *object != nullptr && (*object)->source == "{\\column}";
}

std::string ParagraphText(const Paragraph& paragraph) {
  std::string text;
  for (const Run& run : paragraph.runs) text += run.text;
  return text;
}

void MoveMarksOutOfCodes(Paragraph* paragraph) {
  if (paragraph->marks.empty()) return;
  const std::string text = ParagraphText(*paragraph);
  std::size_t from = 0;
  auto mark = paragraph->marks.begin();  // in the order of their offsets
  while ((from = text.find("<<", from)) != std::string::npos) {
    const std::size_t end = text.find(">>", from + 2);
    if (end == std::string::npos) break;
    const std::size_t start = text.rfind("<<", end);
    while (mark != paragraph->marks.end() && mark->offset <= start) ++mark;
    for (; mark != paragraph->marks.end() && mark->offset < end + 2; ++mark) mark->offset = start;
    from = end + 2;
  }
}

bool Shows(const Block& block) {
  const auto* paragraph = std::get_if<Paragraph>(&block);
  if (paragraph == nullptr) return true;
  const ParagraphFormat& format = paragraph->format;
  return format.bullet.kind != Bullet::Kind::kNone || format.shading > 0 || format.top.present ||
         format.bottom.present || format.left.present || format.right.present ||
         std::any_of(paragraph->runs.begin(), paragraph->runs.end(),
                     [](const Run& run) { return Shows(run); });
}

bool Shows(const std::vector<Block>& blocks) {
  return std::any_of(blocks.begin(), blocks.end(), [](const Block& block) { return Shows(block); });
}

void DropEmptyEnd(std::vector<Block>* blocks) {
  while (blocks->size() > 1) {
    const auto* last = std::get_if<Paragraph>(&blocks->back());
    if (last == nullptr || !last->runs.empty() || !last->marks.empty()) return;
    if (!std::holds_alternative<Paragraph>((*blocks)[blocks->size() - 2])) return;
    blocks->pop_back();
  }
}

}  // namespace tenora::richtext
