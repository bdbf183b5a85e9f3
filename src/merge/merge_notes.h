// What a merge noticed about the values that it put into a letter; the check of the finished letter
// makes findings of it.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tenora {

enum class MergeFact {
  kAltered,      // the value has characters that do not appear in the letter as they are
  kBrackets,     // the value holds "<<" or ">>", which a later replacement may have changed
  kNoPayment,    // filled without a payment
  kNoDate,       // no date: the value is empty
  kPlaceholder,  // no date: the value is what stands for none, as 1 January 1234
  kNumberAgain,  // a first receipt number that another building has had
  kNumberLeft,   // the next receipt number, which was looked at and not taken
};

struct MergeNote {
  MergeFact fact;
  std::string code;       // the merge code ("Tenant Name") or question, without brackets
  std::string value;      // as shown to people
  std::string source;     // kBrackets: as it was put into the letter's source
  bool answered = false;  // the value is an answer to a question, not from the data
};

class MergeNotes {
 public:
  // The code whose value is being fetched; Add without a code concerns it.
  void Begin(std::string_view code) { current_ = code; }
  void Add(MergeFact fact, std::string_view value = {}) {
    Add({fact, current_, std::string(value), {}, false});
  }
  void Add(MergeNote note) {
    const auto same = [&](const MergeNote& other) {
      return other.fact == note.fact && other.code == note.code && other.value == note.value;
    };
    if (std::ranges::none_of(notes_, same)) notes_.push_back(std::move(note));
  }
  const std::vector<MergeNote>& All() const { return notes_; }

 private:
  std::string current_;
  std::vector<MergeNote> notes_;
};

}  // namespace tenora
