// One stream of text while it is read: the letter itself, a header, a footnote, a text box.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/list_counter.h"
#include "platform/richtext/read/block_builder.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/read/list_table.h"
#include "platform/richtext/read/page_words.h"
#include "platform/richtext/read/paragraph_words.h"
#include "platform/richtext/read/row_definition.h"

namespace tenora::richtext {

// Bounds the memory that a hostile source can turn into paragraphs, runs and rows. When it is
// used up, text is still kept, but without structure.
class Budget {
 public:
  explicit Budget(std::size_t bytes) : left_(bytes) {}
  bool Spend(std::size_t bytes) {
    if (bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  std::size_t left_;
};

// What all stories of a document share.
struct StoryContext {
  FontTable& fonts;
  ColourTable& colours;
  ListTable& lists;
  Budget& budget;
  const PageWords& page;
};

class Story {
 public:
  explicit Story(StoryContext context) : context_(context) {}

  // Makes room for so many paragraphs, which need not come.
  void Reserve(std::size_t paragraphs) { blocks_.Reserve(paragraphs); }

  void Text(std::string_view utf8, const CharFormat& format,
            const std::shared_ptr<const Field>& field);
  void Object(Run run);
  void AddMark(std::string source);

  // \par, \cell, \nestcell, \row, \nestrow, \sect. The format is the one at the mark.
  void EndParagraph(const CharFormat& mark);
  void EndCell(const CharFormat& mark);
  void EndNestedCell(const CharFormat& mark);
  void EndRow(const CharFormat& mark);
  void EndNestedRow();
  // `next` is described by what follows.
  void EndSection(const CharFormat& mark, const std::shared_ptr<const Section>& next);
  std::vector<Block> Finish(const CharFormat& mark);

  ParagraphState& state() { return state_; }
  // Paragraph formatting is a group's own: what was in force when the group opened comes back.
  void SaveState() { saved_.push_back(state_); }
  void RestoreState();
  // A word of a row definition, of the outer table or of the nested ones; false for other words.
  bool TakeRowWord(const Token& word, bool nested);
  // Before any word that is none of those.
  void LeaveRowWords(bool nested);
  // Counts the paragraphs: a field's result ends with the paragraph it began in.
  int paragraph_serial() const { return serial_; }

 private:
  // How much of the text belongs to a code that the last run began, and differs in its kerning
  // only.
  std::size_t RestOfCode(std::string_view utf8, const CharFormat& format) const;
  // Moves the text since the last paragraph into a new one.
  void TakeParagraph(const CharFormat& mark, Paragraph* paragraph);
  void NumberParagraph(ParagraphFormat* format);
  void ApplyList(ParagraphFormat* format);
  void EndCellAt(int level, const CharFormat& mark);
  int RowLevel(bool nested) const;
  RowDefinition& Definition(int level);

  StoryContext context_;
  BlockBuilder blocks_;
  std::vector<Run> runs_;    // of the paragraph being read
  std::vector<Mark> marks_;  // of it
  std::size_t length_ = 0;   // of its text, bytes
  ParagraphState state_;
  std::vector<ParagraphState> saved_;
  std::vector<RowDefinition> definitions_;  // by level, from 1
  int serial_ = 0;
  ListCounter numbers_;
  int counted_level_ = 0;  // of the table whose paragraphs it counts
};

}  // namespace tenora::richtext
