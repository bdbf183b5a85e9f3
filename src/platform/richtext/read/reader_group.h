// A group of the source that is open while it is read.
#pragma once

#include <memory>
#include <string>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/read/character_words.h"
#include "platform/richtext/read/destinations.h"

namespace tenora::richtext {

// What is done with the result when the group that owns it closes.
enum class Delivery {
  kNone,
  kObject,       // a Verbatim in the text
  kPicture,      // a Picture in the text
  kMark,         // between two characters
  kHead,         // among the head's groups
  kInfo,         // among the information groups
  kInstruction,  // the instruction of the field around
  kCarried,      // into the carried object around
};

struct ReaderGroup {
  // For the first word of a group, which this uses up: the group is read so. Always true.
  bool Become(Destination wanted) {
    destination = wanted;
    fresh = false;
    return true;
  }

  Destination destination = Destination::kText;
  CharFormat format = PlainFormat();
  const CodePage* page = nullptr;      // of the font in force
  int fallback = 1;                    // \ucN
  std::shared_ptr<const Field> field;  // whose result this is
  int field_serial = 0;                // the paragraph the result began in
  std::shared_ptr<Field> making;       // \field: the field being read
  Delivery delivery = Delivery::kNone;
  bool owns_story = false, owns_carried = false;
  bool open_ending = false;  // of the story: its last paragraph has no mark
  bool fresh = false;        // nothing but \* was seen in it
  bool starred = false;
  bool brace_written = false;  // its braces are written into the carried object
  bool alternatives = false;   // \upr: only \ud in it is read
  bool nested_row = false;     // \nesttableprops
  bool saved_state = false;    // the story keeps the paragraph formatting from before
  bool entry = false;          // it holds one entry of a table (list, override), one picture
  bool shown = false;          // text of a carried object that a reader of the letter sees
  bool replaced = false;       // \shprslt: what readers show that do not know the shape
  bool in_shape = false;       // it holds a shape inside a carried group of shapes
  enum class Property { kNone, kName, kValue };
  Property property = Property::kNone;  // of a shape or a picture
  std::string own_word;                 // that began the story or carried object it owns
};

}  // namespace tenora::richtext
