// Cuts RTF source into tokens. Any bytes can be cut; nothing is copied.
#pragma once

#include <cstddef>
#include <string_view>

namespace tenora::richtext {

struct Token {
  enum class Kind {
    kEnd,
    kOpen,    // {
    kClose,   // }
    kWord,    // \name or \nameN: `text` is the name
    kSymbol,  // \ and one character that is no letter: `text` is the character
    kByte,    // \'xx or a raw byte beyond ASCII: `param` is its value
    kText,    // printable ASCII
    kBinary,  // \binN: `text` is the data, cut at the end of the source
  };
  Kind kind = Kind::kEnd;
  std::string_view text = {};
  int param = 0;
  bool has_param = false;

  // The parameter of a switch: \b and \b1 are on, \b0 is off.
  bool On() const { return !has_param || param != 0; }
  int Or(int fallback) const { return has_param ? param : fallback; }
};

class Tokenizer {
 public:
  explicit Tokenizer(std::string_view source) : source_(source) {}

  Token Next();
  std::size_t position() const { return position_; }

 private:
  Token Control();
  Token Word();
  Token HexByte();
  int Parameter(bool* present);

  std::string_view source_;
  std::size_t position_ = 0;
};

}  // namespace tenora::richtext
