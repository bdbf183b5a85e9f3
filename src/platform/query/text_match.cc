#include "platform/query/text_match.h"

#include "platform/query/values/collation.h"

namespace tenora::query {

std::size_t TextMatch::operator()(std::string_view text) const { return HashText(text); }

bool TextMatch::operator()(std::string_view left, std::string_view right) const {
  return CompareText(left, right) == 0;
}

}  // namespace tenora::query
