// Footnotes and endnotes among the runs of a paragraph.
#pragma once

#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The text of a note; null for all other runs.
const std::vector<Block>* BlocksOfNote(const Run& run);
// Of a note: it stands at the letter's end, not at its page's foot.
bool IsEndnote(const Run& run);
// The number that word processors give to a note (\chftn).
bool IsNoteMark(const Run& run);

}  // namespace tenora::richtext
