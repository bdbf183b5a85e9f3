// Turns what RTF source says about characters into characters: the bytes of a code page, \uN in
// UTF-16 units, and the fallback text behind each \uN, which is skipped.
#pragma once

#include <string>

#include "platform/richtext/characters/byte_decoder.h"
#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// The halves of a double-byte character or a surrogate pair may be written in different forms: the
// first is pending until the second, or anything else, follows.
class CharacterReader {
 public:
  // Removes from the token what belongs to the fallback of the last \uN; true when nothing of the
  // token is left. A brace and a word that is no character end the fallback early.
  bool SkipFallback(Token* token) { return skip_ > 0 && Skip(token); }

  // The character that this byte completes, after a pending half that it does not complete.
  std::u32string TakeByte(unsigned char byte, const CodePage& page);
  // The same for \uN with a fallback of so many characters.
  std::u32string TakeUnicode(int number, int fallback);
  // Abandons what is pending: U+FFFD for half a surrogate pair, nothing for a lead byte.
  std::u32string Flush();

  bool pending() const { return byte_pending() || surrogate_pending(); }
  bool byte_pending() const { return decoder_.pending(); }
  bool surrogate_pending() const { return high_surrogate_ != 0; }

 private:
  bool Skip(Token* token);

  ByteDecoder decoder_;
  char32_t high_surrogate_ = 0;
  int skip_ = 0;  // characters of the fallback still to come
};

}  // namespace tenora::richtext
