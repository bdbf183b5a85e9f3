// The control words that name the kinds of borders.
#pragma once

#include <optional>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The word that is written for a kind, as "brdrdb".
std::string_view BorderKindWord(Border::Kind kind);
// The kind that a word names, the nearest one for those that are not told apart here, such as waves
// and shadows; nothing for other words.
std::optional<Border::Kind> BorderKindOf(std::string_view word);

// Whether the kind has more than one line.
bool HasSeveralLines(Border::Kind kind);

}  // namespace tenora::richtext
