// Cuts RTF source into tokens: braces, control words, escapes and runs of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tenora::html {

struct Token {
  enum class Kind {
    kText,         // a run between control tokens; may hold line breaks, which mean nothing
    kOpenGroup,    // {
    kCloseGroup,   // }
    kCharacter,    // \\ \{ \}: the one character in `text`
    kHexEscape,    // \'xx: `text` is the two digits (fewer at the end of the source)
    kControlWord,  // \name or \nameN; a control symbol such as \* is a word of one sign
  };
  Kind kind = Kind::kText;
  std::string_view text;       // of a control word: its name
  std::string_view parameter;  // of a control word: "", "24", "-3"

  bool IsWord(std::string_view name) const { return kind == Kind::kControlWord && text == name; }
  // The parameter, kept within 32 bits; nothing when the word carries none.
  std::optional<std::int32_t> Number() const;
};

// A cursor over the source. A control word ends where its letters and number end, together with
// the one blank behind it. The raw bytes behind \binN are stepped over.
class Tokenizer {
 public:
  explicit Tokenizer(std::string_view source, std::size_t position = 0)
      : source_(source), position_(position) {}

  std::size_t position() const { return position_; }

  // False at the end of the source.
  bool Next(Token& token);
  // Moves behind the closing brace of the group the cursor is in.
  void LeaveGroup();

 private:
  void TakeControl(Token& token);
  void TakeControlWord(Token& token);

  std::string_view source_;
  std::size_t position_;
};

// Position behind the brace that closes the group in which `position` lies, or the end of the
// source when it is never closed. Escaped braces and the bytes of \binN do not count.
std::size_t EndOfGroup(std::string_view source, std::size_t position);

inline bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Decimal digits with an optional minus sign, kept within 32 bits; reading stops at anything else.
std::int32_t ClampedNumber(std::string_view digits);

}  // namespace tenora::html
