// Puts a filled text together again: paragraphs and tables from what the tree gives, without the
// lines and paragraphs of which nothing is left.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

class FormSink {
 public:
  // `content`: whether it counts as something in its line although it may be blank.
  void Add(richtext::Run run, bool content);
  void AddMark(richtext::Mark mark);
  // `marked`: a marker stands in the line. One of which nothing else is left has no end either.
  void EndLine(const richtext::Run& line_break, bool marked);
  // `marked` for its last line, `paragraph_marked` for all.
  void EndParagraph(const richtext::Paragraph& from, bool marked, bool paragraph_marked);
  // A section's end outlives what stands before it.
  void EndSection(const richtext::Paragraph& from);
  // Behind another table, its rows go on with that.
  void AddTable(richtext::Table table);

  // What comes next stands in this paragraph of the template; what has begun keeps its own.
  void BeginIn(const richtext::Paragraph& from) {
    if (from_ == nullptr) from_ = &from;
  }

  // Never empty, and never ending in a table: what is missing is an empty paragraph like `like`.
  std::vector<richtext::Block> Take(const richtext::Paragraph& like);

 private:
  bool LineIsEmpty() const { return !line_content_; }
  void DropLine();
  void DropText();
  void Flush();
  void Finish(const richtext::Paragraph& from);

  std::vector<richtext::Block> blocks_;
  richtext::Paragraph current_;
  std::size_t length_ = 0;      // of current_'s text
  std::size_t line_begin_ = 0;  // the first of its runs in the line
  bool line_content_ = false, content_ = false;
  const richtext::Paragraph* from_ = nullptr;  // that current_ began in
};

}  // namespace tenora
