// Texts as the "=" of a database compares them (letter case and trailing blanks aside, accents
// not), for maps that put the rows of several statements together.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tenora::query {

class Collation;

class TextMatch {
 public:
  using is_transparent = void;

  // By the order of .mdb files, where no database is at hand.
  TextMatch();
  explicit TextMatch(const Collation& collation) : collation_(&collation) {}

  // A hash, equal for equal texts.
  std::size_t operator()(std::string_view text) const;
  // Whether they are equal.
  bool operator()(std::string_view left, std::string_view right) const;

 private:
  const Collation* collation_;  // lives as long as the program
};

template <typename Mapped>
class TextMap : public std::unordered_map<std::string, Mapped, TextMatch, TextMatch> {
 public:
  explicit TextMap(const TextMatch& match)
      : std::unordered_map<std::string, Mapped, TextMatch, TextMatch>(0, match, match) {}
};

}  // namespace tenora::query
