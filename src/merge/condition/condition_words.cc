#include "merge/condition/condition_words.h"

#include <array>
#include <optional>
#include <utility>

#include "merge/condition.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Kind = ConditionWord::Kind;

struct Quote {
  std::string_view open;
  std::array<std::string_view, 3> close;
};

// What word processors make of quotation marks ends with any of its kind.
constexpr std::array<Quote, 6> kQuotes{{{"\"", {"\"", "”", "“"}},
                                        {"“", {"”", "“", "\""}},
                                        {"„", {"“", "”", "\""}},
                                        {"'", {"'", "’", "'"}},
                                        {"‘", {"’", "'", "’"}},
                                        {"«", {"»", "»", "»"}}}};

struct Sign {
  std::string_view written, meant;
};

// Longer ones first.
constexpr std::array<Sign, 13> kSigns{{{"<=", "<="},
                                       {">=", ">="},
                                       {"<>", "<>"},
                                       {"!=", "<>"},
                                       {"==", "="},
                                       {"≤", "<="},
                                       {"≥", ">="},
                                       {"≠", "<>"},
                                       {"=", "="},
                                       {"<", "<"},
                                       {">", ">"},
                                       {"(", "("},
                                       {")", ")"}}};

constexpr std::array<std::string_view, 5> kBlanks{" ", "\t", "\n", "\v", "\xC2\xA0"};

template <typename List>
std::string_view StartOf(std::string_view text, const List& starts) {
  for (const std::string_view start : starts) {
    if (text.starts_with(start)) return start;
  }
  return {};
}

class Words {
 public:
  explicit Words(std::string_view text) : rest_(text) {}

  std::vector<ConditionWord> Take() {
    while (!rest_.empty()) {
      if (const auto blank = StartOf(rest_, kBlanks); !blank.empty()) {
        rest_.remove_prefix(blank.size());
      } else if (!TakeQuoted() && !TakeName() && !TakeSign()) {
        TakeWord();
      }
    }
    words_.push_back({});
    return std::move(words_);
  }

 private:
  const Quote* QuoteHere() const {
    for (const Quote& quote : kQuotes) {
      if (rest_.starts_with(quote.open)) return &quote;
    }
    return nullptr;
  }

  const Sign* SignHere() const {
    for (const Sign& sign : kSigns) {
      if (rest_.starts_with(sign.written)) return &sign;
    }
    return nullptr;
  }

  bool TakeQuoted() {
    const Quote* const quote = QuoteHere();
    if (quote == nullptr) return false;
    rest_.remove_prefix(quote->open.size());
    std::size_t end = std::string_view::npos;
    std::string_view close;
    for (const std::string_view one : quote->close) {
      const std::size_t at = rest_.find(one);
      if (at < end) {
        end = at;
        close = one;
      }
    }
    if (end == std::string_view::npos) {
      throw ConditionError("The quotation mark before \"" + std::string(rest_) +
                           "\" has no second one");
    }
    words_.push_back({Kind::kText, std::string(rest_.substr(0, end))});
    rest_.remove_prefix(end + close.size());
    return true;
  }

  bool TakeName() {
    if (!rest_.starts_with('[')) return false;
    const std::size_t end = rest_.find(']');
    if (end == std::string_view::npos) throw ConditionError("A \"[\" has no \"]\" behind it");
    words_.push_back({Kind::kName, std::string(rest_.substr(1, end - 1))});
    rest_.remove_prefix(end + 1);
    return true;
  }

  // A plus or minus stands for itself where a blank or a word comes before it; "-5" is a number.
  bool TakeSign() {
    if (const Sign* const sign = SignHere()) {
      words_.push_back({Kind::kSign, std::string(sign->meant)});
      rest_.remove_prefix(sign->written.size());
      return true;
    }
    const bool number_follows =
        rest_.size() > 1 && IsDigit(rest_[1]) &&
        (words_.empty() || (words_.back().kind == Kind::kSign && words_.back().text != ")"));
    if ((rest_.front() != '+' && rest_.front() != '-') || number_follows) return false;
    words_.push_back({Kind::kSign, std::string(1, rest_.front())});
    rest_.remove_prefix(1);
    return true;
  }

  void TakeWord() {
    std::string word;
    do {
      word += rest_.front();
      rest_.remove_prefix(1);
    } while (!rest_.empty() && rest_.front() != '+' && rest_.front() != '[' &&
             SignHere() == nullptr && StartOf(rest_, kBlanks).empty());
    words_.push_back({Kind::kWord, std::move(word)});
  }

  std::string_view rest_;
  std::vector<ConditionWord> words_;
};

}  // namespace

std::vector<ConditionWord> WordsOf(std::string_view condition) { return Words(condition).Take(); }

}  // namespace tenora
