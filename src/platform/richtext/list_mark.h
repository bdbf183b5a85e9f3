// The bullets and numbers in front of list paragraphs.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// "3." or "(c)" as the list's format has it; the bullet character itself for bullets.
std::string ListMark(const Bullet& bullet, int number);

}  // namespace tenora::richtext
