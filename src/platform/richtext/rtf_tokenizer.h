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
    kByte,    // \'xx: `param` is its value, in literal tokens `text` the two characters
    kText,    // a run of text
    kBinary,  // \binN: `text` is the data, cut at the end of the source
  };
  Kind kind = Kind::kEnd;
  std::string_view text = {};
  int param = 0;
  bool has_param = false;

  bool IsWord(std::string_view name) const { return kind == Kind::kWord && text == name; }
  // \\, \{ and \}: `text` is the character meant.
  bool IsEscapedCharacter() const {
    return kind == Kind::kSymbol && (text == "\\" || text == "{" || text == "}");
  }
  // The parameter of a switch: \b and \b1 are on, \b0 is off.
  bool On() const { return !has_param || param != 0; }
  int Or(int fallback) const { return has_param ? param : fallback; }
};

// A control word ends where its letters and its number end, including one blank after it.
class Tokenizer {
 public:
  enum class Form {
    // Text comes as runs of printable ASCII and other bytes as a kByte each; line ends are dropped,
    // tabs and escaped line ends are the words they mean; \'xx takes hexadecimal digits only.
    kDecoded,
    // Text comes whole up to the next \, { or }, line ends and all bytes included; \'xx takes the
    // next two characters, whatever they are; a backslash at the end is a symbol without text.
    kLiteral,
  };

  explicit Tokenizer(std::string_view source, Form form = Form::kDecoded)
      : source_(source), form_(form) {}

  Token Next();
  // Moves past the brace that closes the current group.
  void LeaveGroup();
  std::size_t position() const { return position_; }

 private:
  Token LiteralText();
  Token Control();
  Token Word();
  Token HexByte();
  int Parameter(bool* present);

  std::string_view source_;
  Form form_;
  std::size_t position_ = 0;
};

// Position after the brace that closes the group containing `position`, or the end of the
// source when it is never closed. Escaped braces and the bytes of \binN do not count.
std::size_t EndOfGroup(std::string_view source, std::size_t position);

// A letter that a control word can hold.
inline bool IsWordLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace tenora::richtext
