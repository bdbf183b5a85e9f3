// An editor that shows a RichTextBox's letter. While one is attached, what is typed there is the
// box's content, and what is changed through the box appears there.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"

namespace tenora {

class RichTextView {
 public:
  // Positions of the letter's text, as document_text.h counts them.
  struct Range {
    int start = 0, length = 0;
  };
  enum class Change {
    kContent,    // the same letter, changed: what was done before can still be undone
    kNewLetter,  // another letter
  };

  virtual ~RichTextView() = default;

  // The current letter in the editor.
  virtual richtext::Document Content() = 0;
  virtual Range Selection() = 0;
  // Moves the selection; a range beyond the text is cut to it.
  virtual void Select(Range range) = 0;
  // Replaces the selection by plain text in the format at its start, as one undo step; the caret
  // ends up after it.
  virtual void ReplaceSelection(std::string_view utf8) = 0;
  // The box holds a newer letter. The view takes it with RichTextBox::Document and SelStart before
  // it next paints or takes a key, so that a merge of many codes is shown, and undone, as one.
  virtual void BoxChanged(Change change) = 0;
};

}  // namespace tenora
