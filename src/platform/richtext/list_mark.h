// The bullets and numbers in front of list paragraphs: the same in saved letters, on paper, in the
// editor and in e-mails.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The number alone, as "iv". Numbers below 1 and above 32767 are always written in digits.
std::string FormatNumber(Bullet::Kind kind, int number);
// "3." or "(c)" as the list's format has it; the bullet itself for bullets.
std::string ListMark(const Bullet& bullet, int number);

}  // namespace tenora::richtext
