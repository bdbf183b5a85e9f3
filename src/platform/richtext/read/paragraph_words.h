// What the control words of paragraph formatting do.
#pragma once

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// Where border words go: they follow the word that names the edge.
enum class BorderTarget { kNone, kTop, kBottom, kLeft, kRight, kBetween, kBox, kRow };

// The paragraph formatting in force while a document is read, with what only reading needs.
struct ParagraphState {
  ParagraphFormat format;
  bool in_table = false;
  int nesting = 0;     // \itap
  int list = -1;       // \ls, -1 outside lists
  int list_level = 0;  // \ilvl
  int shading = 0;     // \shading, in hundredths of a percent
  int style = 0;       // \s
  bool contextual_space = false;
  bool frame_from_named = false;  // what the frame's height is relative to
  bool widow_control = false;     // \widowctrl: of paragraphs that say nothing about it
  BorderTarget border = BorderTarget::kNone;
  TabStop tab;  // kind and leader for the next \tx

  // 0 outside tables, 1 in a table's cell, 2 in a cell of a table in a cell, …
  int TableLevel() const;
};

bool IsParagraphWord(std::string_view name);
void ApplyParagraphWord(const Token& word, const ColourTable& colours, ParagraphState* state);

}  // namespace tenora::richtext
