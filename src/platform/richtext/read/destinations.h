// The groups of RTF that are not plain text, and what becomes of each.
#pragma once

#include <string_view>

namespace tenora::richtext {

// How the content of a group is read.
enum class Destination {
  kText,         // the story in hand
  kSkip,         // nothing of it is kept
  kCarried,      // rebuilt in the object being carried
  kPicture,      // as kCarried, and the picture's bytes are read
  kFonts,        // \fonttbl
  kColours,      // \colortbl
  kStyles,       // \stylesheet
  kLists,        // \listtable
  kLevelText,    // \leveltext in it
  kOverrides,    // \listoverridetable
  kInfo,         // \info
  kTitle,        // \title in it
  kClassicList,  // \pn
  kListBefore,   // \pntxtb in it
  kListAfter,    // \pntxta in it
  kField,        // \field, around instruction and result
};

// What a destination word begins, when it is the first word of a group.
enum class Opens {
  kNothing,  // the group is plain
  kSkipped,  // a group that is dropped
  kFonts,
  kColours,
  kStyles,
  kLists,
  kOverrides,
  kInfo,
  kClassicList,
  kNestedRow,  // \nesttableprops
  kField,
  kInstruction,  // \fldinst
  kResult,       // \fldrslt
  kPicture,
  kObject,        // carried through, takes one position
  kMark,          // carried through, takes no room
  kHead,          // carried through in the head
  kHeadStory,     // a header or footer
  kObjectStory,   // a footnote
  kMarkStory,     // a comment
  kCopiedStory,   // text inside something that is carried through
  kAlternatives,  // \upr: the same text twice
  kUnicode,       // \ud, the better of the two
};

// `starred` tells whether \* stood before the word: an unknown word is then a group to drop.
Opens WhatOpens(std::string_view word, bool starred);

}  // namespace tenora::richtext
