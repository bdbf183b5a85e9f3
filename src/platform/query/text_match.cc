#include "platform/query/text_match.h"

#include "platform/query/values/collation.h"

namespace tenora::query {
namespace {

// The general order of the versions of the engine before 2010.
constexpr std::uint32_t kBefore2010 = 1033;

}  // namespace

TextMatch::TextMatch() : TextMatch(Collation::Of(kBefore2010)) {}

std::size_t TextMatch::operator()(std::string_view text) const { return collation_->Hash(text); }

bool TextMatch::operator()(std::string_view left, std::string_view right) const {
  return collation_->Compare(left, right) == 0;
}

}  // namespace tenora::query
