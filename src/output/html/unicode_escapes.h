// Unicode escapes (\uN) and the fallback text after each, for readers without Unicode support.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::html {

class UnicodeEscapes {
 public:
  // \ucN holds until the end of its group.
  void OpenGroup() { ++depth_; }
  void CloseGroup();
  void SetFallbackLength(std::int32_t length);

  // The character reference of \uN, "&#363;". Empty for the first half of a surrogate pair, which
  // waits for the second, and for what is no character.
  std::string Reference(std::int32_t number);

  // Called for every token. Removes what belongs to the last escape's fallback from the token; true
  // when nothing of it is left. One character of text, one escape or one control word counts as
  // one; a brace ends it.
  bool SkipFallback(richtext::Token& token);

 private:
  struct FallbackLength {
    std::size_t depth;
    std::int32_t length;
  };

  std::size_t depth_ = 0;
  std::vector<FallbackLength> lengths_;  // innermost last, one a group at the most
  std::int32_t to_skip_ = 0;
  char32_t high_surrogate_ = 0;
};

}  // namespace tenora::html
