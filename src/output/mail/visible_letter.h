// The part of a letter that its reader is meant to see.
#pragma once

#include "platform/richtext/document.h"

namespace tenora {

// A copy without hidden and deleted text and without page headers and footers, none of which is
// part of the printed text either; objects, shapes and notes are replaced by the picture or text
// they show.
richtext::Document VisibleLetter(const richtext::Document& letter);

}  // namespace tenora
