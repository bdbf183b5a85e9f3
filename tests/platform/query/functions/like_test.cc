#include "platform/query/functions/like.h"

#include <gtest/gtest.h>

#include <string>

namespace tenora::query {
namespace {

const Collation& kOrder = Collation::Of(0x00000409);

TEST(MatchesLike, FollowsTheEnginesWildcards) {
  const struct {
    const char* text;
    const char* pattern;
    bool matches;
  } kCases[] = {
      {"T00001", "t0*1", true},
      {"T00001", "T?00?1", true},
      {"T00001", "T#####", true},
      {"T0000A", "T#####", false},
      {"", "*", true},
      {"", "?", false},
      {"abc", "a[a-c]c", true},
      {"abc", "a[!a-c]c", false},
      {"a*c", "a[*]c", true},
      {"abc", "a[*]c", false},
      {"a-c", "a[-x]c", true},
      {"abc", "abc*", true},
      {"abcabd", "*abd", true},
      {"abcab", "*abd", false},
      {"Māhuta", "MĀ*", true},
      {"Māhuta", "M?huta", true},
      {"abc", "ab", false},
      {"100%", "100%", true},
      {"a_c", "a_c", true},
      {"abc", "a_c", false},
      {"abc", "a[b", false},
      {"a!c", "a[!]c", true},
      {"a]c", "a]c", true},
      {"", "", true},
      // Ranges follow the order of texts, in which letters have their accents behind them.
      {"Émile", "[a-f]*", true},
      {"Émile", "[!a-f]*", false},
      {"é", "[a-e]", false},
      {"Øst", "[o-p]st", true},
      {"Жуков", "[а-я]*", true},
      {"Жуков", "[a-z]*", false},
      {"Straße", "STRA[r-t]E", true},
      {"ﾏ", "マ", true},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(MatchesLike(c.text, c.pattern, kOrder), c.matches) << c.text << " like " << c.pattern;
}

TEST(MatchesLike, EndsSoonOnPatternsMadeToTakeForever) {
  std::string pattern;
  for (int i = 0; i < 2000; ++i) pattern += "*a";
  EXPECT_FALSE(MatchesLike(std::string(20000, 'a'), pattern + "b", kOrder));
}

}  // namespace
}  // namespace tenora::query
