// The groups of RTF that are not plain text, and how each is handled.
#pragma once

#include <optional>
#include <string_view>

namespace tenora::richtext {

// How the content of a group is read.
enum class Destination {
  kText,         // the current story
  kSkip,         // dropped
  kCarried,      // rebuilt in the carried object
  kPicture,      // as kCarried, and the picture's bytes are read
  kFonts,        // \fonttbl
  kColours,      // \colortbl
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
  kMark,          // carried through, has no width
  kHead,          // carried through in the head
  kHeadStory,     // a header or footer
  kObjectStory,   // a footnote
  kMarkStory,     // a comment
  kCopiedStory,   // text inside something that is carried through
  kAlternatives,  // \upr: the same text twice
  kUnicode,       // \ud, the Unicode form of the two
};

// `starred`: \* came before the word; a group with an unknown word is then dropped.
Opens WhatOpens(std::string_view word, bool starred);

// A word with which groups begin that hold no text. Some writers lose what stands before it.
bool IsNeverText(std::string_view word);

// How a group is read that is neither carried through nor a text of its own; none for others.
std::optional<Destination> DestinationOf(Opens opens);

}  // namespace tenora::richtext
