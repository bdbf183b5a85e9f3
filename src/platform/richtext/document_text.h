// A document's plain text, and positions in it. A position counts UTF-16 units; the end of a
// paragraph, a cell's end and a line break each count one.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// What ends a paragraph; the last paragraph of a document ends with nothing.
enum class ParagraphEnd { kParagraph, kCell, kRow };

// Every paragraph in reading order, those in the cells of tables in their place.
void ForEachParagraph(const std::vector<Block>& blocks,
                      const std::function<void(const Paragraph&, ParagraphEnd)>& visit);
void ForEachParagraph(std::vector<Block>& blocks,
                      const std::function<void(Paragraph&, ParagraphEnd)>& visit);

// UTF-8. Paragraphs, rows and line breaks end with "\r\n", cells with a tab; a page break is "\f",
// an object U+FFFC.
std::string PlainText(const std::vector<Block>& blocks);
// The same by positions: every end and line break is one "\n".
std::u16string PositionText(const std::vector<Block>& blocks);

// \column: the text goes on in the next column.
bool IsColumnBreak(const Run& run);

std::string ParagraphText(const Paragraph& paragraph);
// A merge code is found in the source as one piece of text, so marks inside it move in front of it.
void MoveMarksOutOfCodes(Paragraph* paragraph);
// Whether the block, or any of the blocks, puts anything on paper.
bool Shows(const Block& block);
bool Shows(const std::vector<Block>& blocks);
// Takes empty paragraphs off the end; one block always stays.
void DropEmptyEnd(std::vector<Block>* blocks);

}  // namespace tenora::richtext
