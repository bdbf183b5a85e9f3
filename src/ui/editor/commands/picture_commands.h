// Commands on the picture that is selected: its size, and how the text goes around it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/richtext/picture_look.h"
#include "ui/editor/document/edited_letter.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {

class PictureCommands {
 public:
  // The letter outlives this object. `page_width` gives the width of the page's text, twips.
  PictureCommands(EditedLetter& letter, std::function<int()> page_width)
      : letter_(letter), page_width_(std::move(page_width)) {}

  // The place of the picture that is all of the selection; -1 where that is something else.
  int Selected() const;
  // Nothing where the character there is no picture, or one whose look cannot be changed.
  std::optional<richtext::PictureLook> LookAt(int position) const;
  // Changes the selected picture, as one undo step; it stays selected.
  void Change(const richtext::PictureLook& look);
  // Asks for the size and the place of the selected picture.
  void Ask();

 private:
  std::shared_ptr<const InlineObject> ObjectAt(int position) const;

  // Of the lines at the selection, twips.
  int TextWidth() const;

  EditedLetter& letter_;
  std::function<int()> page_width_;
};

}  // namespace tenora
