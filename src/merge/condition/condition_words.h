// A condition's text as words, numbers, texts and signs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

struct ConditionWord {
  enum class Kind {
    kWord,  // also a number or a date: what it means depends on where it stands
    kText,  // from between quotation marks
    kName,  // from between square brackets
    kSign,  // = <> < <= > >= ( ) + -
    kEnd,
  };
  Kind kind = Kind::kEnd;
  std::string text;
};

// The words, and one kEnd behind them. Typographic quotation marks and comparison signs count as
// the plain ones. Raises ConditionError for a quotation or bracket that does not end.
std::vector<ConditionWord> WordsOf(std::string_view condition);

}  // namespace tenora
