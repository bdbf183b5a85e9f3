// The number in front of a list's paragraph.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// 27 in lower letters is "aa", 4 in upper Roman is "IV".
std::string FormatNumber(Bullet::Kind kind, int number);

}  // namespace tenora::richtext
