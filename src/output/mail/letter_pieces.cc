#include "output/mail/letter_pieces.h"

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
    } else if (name == "f" || name == "fs") {
      words_[name] = "\\" + name + std::string(word.parameter);
    } else if (name == "cf") {
      words_[kLast] = "\\cf" + std::string(word.parameter);
    }
  }

  std::string Words() const {
    std::string all;
    for (const auto& [kind, word] : words_) all += word;
    return all.empty() ? all : all + " ";
  }

  // The colour word, which makes the converter take up a new font or size.
  std::string ColourWord() const {
    const auto colour = words_.find(kLast);
    return colour == words_.end() ? std::string() : colour->second + " ";
  }

 private:
  // Behind all other kinds: the colour word has to follow the font and the size.
  static constexpr const char* kLast = "~";

  std::map<std::string, std::string> words_;
};

class Cutter {
 public:
  explicit Cutter(std::string_view source) : source_(source) {}

  std::vector<LetterPiece> Cut() {
    std::size_t at = 0;
    while (at < source_.size()) {
      const char c = source_[at];
      if (c == '\\') {
        const ControlWord word = ReadControlWord(source_, at);
        TakeWord(word, source_.substr(at, word.end - at));
        at = word.end;
        continue;
      }
      text_ += c;
      if (c == '{') groups_.push_back(state_);
      if (c == '}') LeaveGroup();
      ++at;
    }
    EndPiece(-1, -1);
    return std::move(pieces_);
  }

 private:
  void TakeWord(const ControlWord& word, std::string_view written) {
    if (word.name == "trowd" && cell_ < 0) {
      EndPiece(-1, -1);
      ++rows_;
      cell_ = 0;
    } else if (word.name == "cell" && cell_ >= 0) {
      EndPiece(rows_ - 1, cell_++);
    } else if (word.name == "row" && cell_ >= 0) {
      // What stands between the last cell and the end of the row is no text.
      text_ = state_.Words();
      cell_ = -1;
    } else if (word.name == "nestcell") {
      text_ += "\\tab ";
    } else if (word.name == "nestrow" || word.name == "line" || word.name == "page") {
      // The converter knows one kind of break; without it two lines of an address would join.
      text_ += "\\par ";
    } else {
      text_ += written;
      state_.Take(word);
      if (word.name == "pard") Restate();
      if (word.name == "f" || word.name == "fs") text_ += state_.ColourWord();
    }
  }

  void LeaveGroup() {
    if (groups_.empty()) return;
    state_ = std::move(groups_.back());
    groups_.pop_back();
    Restate();
  }

  // The converter forgets its formats at "}" and \pard; rich text keeps them.
  void Restate() {
    if (text_.ends_with(' ')) text_.pop_back();
    text_ += state_.Words();
    if (!text_.ends_with('}') && !text_.ends_with(' ')) text_ += ' ';
  }

  void EndPiece(int row, int cell) {
    pieces_.push_back({std::move(text_), row, cell});
    text_ = state_.Words();
  }

  std::string_view source_;
  FormatState state_;
  std::vector<FormatState> groups_;
  std::vector<LetterPiece> pieces_;
  std::string text_;
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
