// EQ fields, with which word processors wrote formulas, as a line of text.
#pragma once

#include <string>
#include <string_view>

namespace tenora::richtext {

// Takes what follows "EQ", UTF-8: `\f(1,2)` gives "1/2", `\r(,x)` "√x". What stands above, below or
// over something else follows it.
std::string TextOfEquation(std::string_view text);

}  // namespace tenora::richtext
