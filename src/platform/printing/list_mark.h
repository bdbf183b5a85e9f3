// The bullets and numbers in front of list paragraphs.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::printing {

// "3." or "(c)" as the list's format has it; the bullet character itself for bullets.
std::string ListMark(const richtext::Bullet& bullet, int number);

}  // namespace tenora::printing
