#include "merge/forms/form_marker.h"

#include <array>
#include <utility>
#include <vector>

#include "merge/condition.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Kind = FormMarker::Kind;

constexpr std::array<std::string_view, 4> kBlanks{" ", "\t", "\v", "\xC2\xA0"};

std::string_view WithoutBlanksAhead(std::string_view text) {
  for (bool found = true; found;) {
    found = false;
    for (const std::string_view blank : kBlanks) {
      if (!text.starts_with(blank)) continue;
      text.remove_prefix(blank.size());
      found = true;
    }
  }
  return text;
}

std::string_view Trimmed(std::string_view text) {
  text = WithoutBlanksAhead(text);
  for (bool found = true; found;) {
    found = false;
    for (const std::string_view blank : kBlanks) {
      if (!text.ends_with(blank)) continue;
      text.remove_suffix(blank.size());
      found = true;
    }
  }
  return text;
}

bool BeginsWithBlank(std::string_view text) { return WithoutBlanksAhead(text) != text; }

// Takes a word, which a blank or a bracket ends.
bool TakeWord(std::string_view& text, std::string_view word) {
  if (!StartsWithNoCase(text, word)) return false;
  const std::string_view behind = text.substr(word.size());
  const bool ends = behind.empty() || BeginsWithBlank(behind) || behind.front() == '(' ||
                    behind.front() == '[' || behind.front() == '"';
  if (ends) text = WithoutBlanksAhead(behind);
  return ends;
}

// A word and where it begins in the text it is from.
struct PlacedWord {
  std::size_t begin = 0, end = 0;
  std::string folded;
};

// Words outside quotation marks and square brackets.
std::vector<PlacedWord> WordsIn(std::string_view text) {
  std::vector<PlacedWord> words;
  char closing = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view rest = text.substr(at);
    if (closing != 0) {
      if (rest.front() == closing) closing = 0;
      ++at;
    } else if (rest.front() == '"' || rest.front() == '[') {
      closing = rest.front() == '[' ? ']' : '"';
      ++at;
    } else if (BeginsWithBlank(rest)) {
      at += rest.size() - WithoutBlanksAhead(rest).size();
    } else {
      std::size_t end = at;
      while (end < text.size() && !BeginsWithBlank(text.substr(end)) && text[end] != '"' &&
             text[end] != '[') {
        ++end;
      }
      words.push_back({at, end, ToLower(text.substr(at, end - at))});
      at = end;
    }
  }
  return words;
}

class EachReader {
 public:
  explicit EachReader(std::string_view rest) : rest_(rest), words_(WordsIn(rest)) {}

  EachWords Read() {
    TakeOrder();
    std::optional<std::string>* part = nullptr;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < words_.size() && part != &each_.where; ++i) {
      std::optional<std::string>* const next = PartOf(words_[i].folded);
      if (next == nullptr) continue;
      RefuseOrderAhead(i);
      Keep(part, begin, words_[i].begin, words_[i].folded);
      if (next->has_value()) {
        throw ConditionError("\"" + words_[i].folded + "\" stands there twice");
      }
      next->emplace();
      part = next;
      begin = words_[i].end;
      if (part == &each_.where) NoteClauses(i + 1);
    }
    Keep(part, begin, rest_.size(), "");
    return std::move(each_);
  }

 private:
  // "newest first" at the end.
  void TakeOrder() {
    const std::size_t count = words_.size();
    if (count < 2 || words_[count - 2].folded != "newest" || words_[count - 1].folded != "first") {
      return;
    }
    each_.newest_first = true;
    rest_ = rest_.substr(0, words_[count - 2].begin);
    words_.resize(count - 2);
  }

  // "newest first" that is not at the end, ahead of a clause.
  void RefuseOrderAhead(std::size_t clause) const {
    if (clause < 2 || words_[clause - 2].folded != "newest" ||
        words_[clause - 1].folded != "first") {
      return;
    }
    throw ConditionError("\"newest first\" stands behind the other words, at the end",
                         std::string(kEachExample));
  }

  // Behind "where" everything is its condition, which says itself when it cannot be read.
  void NoteClauses(std::size_t first) {
    for (std::size_t i = first; i < words_.size() && each_.behind_where.empty(); ++i) {
      if (PartOf(words_[i].folded) != nullptr) each_.behind_where = words_[i].folded;
    }
  }

  std::optional<std::string>* PartOf(std::string_view word) {
    if (word == "since") return &each_.since;
    if (word == "until") return &each_.until;
    return word == "where" ? &each_.where : nullptr;
  }

  void Keep(std::optional<std::string>* part, std::size_t begin, std::size_t end,
            const std::string& before) {
    const std::string text(Trimmed(rest_.substr(begin, end - begin)));
    if (part == nullptr) {
      each_.collection = text;
    } else if (text.empty()) {
      const char* const word = part == &each_.where   ? "where"
                               : part == &each_.since ? "since"
                                                      : "until";
      throw ConditionError("Behind \"" + std::string(word) + "\" " +
                               (part == &each_.where ? "a condition" : "a day") + " is missing" +
                               (before.empty() ? "" : " before \"" + before + "\""),
                           std::string(kEachExample));
    } else {
      *part = text;
    }
  }

  std::string_view rest_;
  std::vector<PlacedWord> words_;
  EachWords each_;
};

}  // namespace

std::optional<FormMarker> MarkerOf(std::string_view code) {
  std::string_view rest = Trimmed(code);
  const auto marker = [&](Kind kind) { return FormMarker{kind, std::string(rest)}; };
  if (TakeWord(rest, "if")) return marker(Kind::kIf);
  if (TakeWord(rest, "each")) return marker(Kind::kEach);
  if (TakeWord(rest, "else")) {
    return TakeWord(rest, "if") ? marker(Kind::kElseIf) : marker(Kind::kElse);
  }
  if (TakeWord(rest, "end")) {
    if (TakeWord(rest, "if")) return marker(Kind::kEndIf);
    if (TakeWord(rest, "each")) return marker(Kind::kEndEach);
  }
  return std::nullopt;
}

EachWords ReadEach(std::string_view rest) { return EachReader(Trimmed(rest)).Read(); }

}  // namespace tenora
