// Texts as the engine's "=" compares them (letter case and trailing blanks aside, accents not), for
// maps that put the rows of several statements together. The order is that of .mdb files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tenora::query {

struct TextMatch {
  using is_transparent = void;
  // A hash, equal for equal texts.
  std::size_t operator()(std::string_view text) const;
  // Whether they are equal.
  bool operator()(std::string_view left, std::string_view right) const;
};

template <typename Mapped>
using TextMap = std::unordered_map<std::string, Mapped, TextMatch, TextMatch>;

}  // namespace tenora::query
