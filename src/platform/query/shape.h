// What statements that differ in their literals only have in common.
#pragma once

#include <string>
#include <vector>

#include "platform/query/lexer.h"

namespace tenora::query {

// Statements of equal shape have the same plan, each with its own literals bound. Only literals
// that are compared with something are left out of the shape: others can mean a position or a
// count.
std::string ShapeOf(const std::vector<Token>& tokens);

}  // namespace tenora::query
