// All text of a letter that a merge reaches: its own, and that of headers, footnotes, text boxes,
// comments and links, which is carried through as source. Each comes with what the source between
// its characters looks like, since a merge searches the source.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/richtext/rich_text_box.h"

namespace tenora {

// A run: its characters are contiguous in the source.
struct TextSpan {
  std::size_t begin = 0;  // byte of LetterText::text
  richtext::CharFormat format;
  std::shared_ptr<const richtext::Field> field;  // whose result this is; null outside fields
  bool is_object = false;
};

struct LetterText {
  // A line as the plain text counts them, from 1; the cells of a row are one line.
  struct Line {
    std::size_t begin = 0;
    int number = 1;
  };

  std::string place;  // "header", "footnote", …; empty for the letter's own text
  int head = -1;      // of a header or footer: which, as HeadGroupsOf counts
  // In the letter, in the control's positions: of the first character, or of the place where a text
  // from elsewhere is anchored; -1 for those of the head.
  int position = 0;
  std::string text;  // UTF-8; the ends of paragraphs, cells and lines are "\n"
  std::vector<TextSpan> spans;
  std::vector<Line> lines;

  std::size_t LineAt(std::size_t offset) const;  // index into `lines`
  // The text of the line, blanks in place of tabs and the like.
  std::string TextOfLine(std::size_t line) const;
  // The spans that hold the bytes from begin to before end.
  std::vector<const TextSpan*> SpansOf(std::size_t begin, std::size_t end) const;
};

// The texts in the order in which they begin in the source, nested ones after the outer one.
std::vector<LetterText> TextsOf(const RichTextBox& letter);

}  // namespace tenora
