#include "output/email_tables.h"

#include <map>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

struct ControlWord {
  std::string_view name;       // without the backslash
  std::string_view parameter;  // digits with a sign, may be empty
  std::size_t end = 0;         // behind the word and the blank that closes it
};

// The control word or symbol whose backslash stands at `at`.
ControlWord ReadControlWord(std::string_view source, std::size_t at) {
  std::size_t end = at + 1;
  while (end < source.size() && IsLetter(source[end])) ++end;
  if (end == at + 1) return {source.substr(end, 1), {}, std::min(end + 1, source.size())};
  const std::size_t name_end = end;
  if (end < source.size() && source[end] == '-') ++end;
  while (end < source.size() && IsDigit(source[end])) ++end;
  const std::string_view name = source.substr(at + 1, name_end - at - 1);
  const std::string_view parameter = source.substr(name_end, end - name_end);
  if (end < source.size() && source[end] == ' ') ++end;
  return {name, parameter, end};
}

// The character formats in force, one control word for each kind of format.
class FormatState {
 public:
  void Take(const ControlWord& word) {
    const std::string name(word.name);
    if (name == "plain") {
      words_.clear();
    } else if (name == "ulnone") {
      words_.erase("ul");
    } else if (name == "nosupersub") {
      words_.erase("super");
    } else if (name == "super" || name == "sub") {
      words_["super"] = "\\" + name;
    } else if (name == "b" || name == "i" || name == "ul" || name == "strike") {
      if (word.parameter == "0") {
        words_.erase(name);
      } else {
        words_[name] = "\\" + name;
      }
    } else if (name == "f" || name == "fs" || name == "cf") {
      words_[name] = "\\" + name + std::string(word.parameter);
    }
  }

  std::string Words() const {
    std::string all;
    for (const auto& [kind, word] : words_) all += word;
    return all.empty() ? all : all + " ";
  }

 private:
  std::map<std::string, std::string> words_;
};

class Cutter {
 public:
  explicit Cutter(std::string_view source) : source_(source) {}

  std::vector<LetterPiece> Cut() {
    std::size_t at = 0;
    while (at < source_.size()) {
      const char c = source_[at];
      if (c == '{') {
        groups_.push_back(state_);
        ++at;
      } else if (c == '}') {
        if (!groups_.empty()) {
          state_ = groups_.back();
          groups_.pop_back();
        }
        ++at;
      } else if (c == '\\') {
        const ControlWord word = ReadControlWord(source_, at);
        TakeWord(word, at);
        at = word.end;
      } else {
        ++at;
      }
    }
    EndPiece(source_.size(), -1, -1);
    return std::move(pieces_);
  }

 private:
  void TakeWord(const ControlWord& word, std::size_t at) {
    if (word.name == "trowd" && cell_ < 0) {
      EndPiece(at, -1, -1);
      BeginPiece(at);
      ++rows_;
      cell_ = 0;
    } else if (word.name == "cell" && cell_ >= 0) {
      EndPiece(at, rows_ - 1, cell_++);
      BeginPiece(word.end);
    } else if (word.name == "row" && cell_ >= 0) {
      // What stands between the last cell and the end of the row is no text.
      BeginPiece(word.end);
      cell_ = -1;
    } else {
      state_.Take(word);
    }
  }

  void BeginPiece(std::size_t at) {
    begin_ = at;
    words_at_begin_ = state_.Words();
  }

  void EndPiece(std::size_t at, int row, int cell) {
    std::string text(source_.substr(begin_, at - begin_));
    text = ReplaceAll(ReplaceAll(std::move(text), "\\nestcell", "\\tab"), "\\nestrow", "\\par");
    pieces_.push_back({words_at_begin_ + text, row, cell});
  }

  std::string_view source_;
  FormatState state_;
  std::vector<FormatState> groups_;
  std::vector<LetterPiece> pieces_;
  std::size_t begin_ = 0;
  std::string words_at_begin_;
  int rows_ = 0;
  int cell_ = -1;  // -1: outside tables
};

}  // namespace

std::vector<LetterPiece> CutLetter(std::string_view source) { return Cutter(source).Cut(); }

std::string_view FindGroup(std::string_view source, std::string_view opening) {
  const std::size_t begin = source.find(opening);
  if (begin == std::string_view::npos) return {};
  int depth = 0;
  for (std::size_t at = begin; at < source.size(); ++at) {
    if (source[at] == '\\') {
      ++at;
    } else if (source[at] == '{') {
      ++depth;
    } else if (source[at] == '}' && --depth == 0) {
      return source.substr(begin, at - begin + 1);
    }
  }
  return {};
}

}  // namespace tenora
