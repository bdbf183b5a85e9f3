#include "output/mail/letter_pieces.h"

#include <map>

#include "platform/richtext/rtf_tokenizer.h"

namespace tenora {
namespace {

using richtext::Token;

// The character formats in force, one control word for each kind of format.
class FormatState {
 public:
  void Take(const Token& word) {
    const std::string name(word.text);
    const std::string number = word.has_param ? std::to_string(word.param) : std::string();
    if (name == "plain") {
      words_.clear();
    } else if (name == "ulnone") {
      words_.erase("ul");
    } else if (name == "nosupersub") {
      words_.erase("super");
    } else if (name == "super" || name == "sub") {
      words_["super"] = "\\" + name;
    } else if (name == "b" || name == "i" || name == "ul" || name == "strike") {
      if (word.On()) {
        words_[name] = "\\" + name;
      } else {
        words_.erase(name);
      }
    } else if (name == "f" || name == "fs") {
      words_[name] = "\\" + name + number;
    } else if (name == "cf") {
      words_[kLast] = "\\cf" + number;
    }
  }

  std::string Words() const {
    std::string all;
    for (const auto& [kind, word] : words_) all += word;
    return all.empty() ? all : all + " ";
  }

  // The colour word, which makes the converter apply a new font or size.
  std::string ColourWord() const {
    const auto colour = words_.find(kLast);
    return colour == words_.end() ? std::string() : colour->second + " ";
  }

 private:
  // Sorts last: the colour word has to follow the font and the size.
  static constexpr const char* kLast = "~";

  std::map<std::string, std::string> words_;
};

class Cutter {
 public:
  explicit Cutter(std::string_view source) : source_(source) {}

  std::vector<LetterPiece> Cut() {
    richtext::Tokenizer tokens(source_, richtext::Tokenizer::Form::kLiteral);
    std::size_t begin = 0;
    for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
      const std::string_view written = source_.substr(begin, tokens.position() - begin);
      begin = tokens.position();
      if (token.kind == Token::Kind::kWord) {
        TakeWord(token, written);
        continue;
      }
      text_ += written;
      if (token.kind == Token::Kind::kOpen) groups_.push_back(state_);
      if (token.kind == Token::Kind::kClose) LeaveGroup();
    }
    EndPiece(-1, -1);
    return std::move(pieces_);
  }

 private:
  void TakeWord(const Token& word, std::string_view written) {
    if (word.text == "trowd" && cell_ < 0) {
      EndPiece(-1, -1);
      ++rows_;
      cell_ = 0;
    } else if (word.text == "cell" && cell_ >= 0) {
      EndPiece(rows_ - 1, cell_++);
    } else if (word.text == "row" && cell_ >= 0) {
      // Anything between the last cell and the end of the row is not text.
      text_ = state_.Words();
      cell_ = -1;
    } else if (word.text == "nestcell") {
      text_ += "\\tab ";
    } else if (word.text == "nestrow" || word.text == "line" || word.text == "page") {
      // The converter knows one kind of break; without it two lines of an address would join.
      text_ += "\\par ";
    } else {
      text_ += written;
      state_.Take(word);
      if (word.text == "pard") Restate();
      if (word.text == "f" || word.text == "fs") text_ += state_.ColourWord();
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
  return source.substr(begin, richtext::EndOfGroup(source, begin + 1) - begin);
}

}  // namespace tenora
