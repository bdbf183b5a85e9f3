#include "platform/richtext/read/character_reader.h"

#include <algorithm>
#include <utility>

#include "platform/richtext/characters/special_characters.h"

namespace tenora::richtext {

bool CharacterReader::Skip(Token* token) {
  switch (token->kind) {
    case Token::Kind::kByte:
    case Token::Kind::kSymbol:
    case Token::Kind::kBinary:
      --skip_;
      return true;
    case Token::Kind::kText: {
      const std::size_t count =
          std::min<std::size_t>(static_cast<std::size_t>(skip_), token->text.size());
      skip_ -= static_cast<int>(count);
      token->text.remove_prefix(count);
      return token->text.empty();
    }
    case Token::Kind::kWord:
      if (CharacterOfWord(token->text) != 0) {
        --skip_;
        return true;
      }
      break;
    default:
      break;
  }
  skip_ = 0;
  return false;
}

std::u32string CharacterReader::TakeByte(unsigned char byte, const CodePage& page) {
  std::u32string characters;
  if (surrogate_pending()) characters = Flush();
  decoder_.Take(byte, page, &characters);
  return characters;
}

std::u32string CharacterReader::TakeUnicode(int number, int fallback) {
  const int unit = number < 0 ? number + 0x10000 : number;
  skip_ = fallback;
  const auto character = static_cast<char32_t>(unit);
  if (surrogate_pending() && unit >= 0xdc00 && unit <= 0xdfff) {
    const char32_t high = std::exchange(high_surrogate_, 0);
    return {0x10000 + ((high - 0xd800) << 10) + (character - 0xdc00)};
  }
  std::u32string characters = Flush();
  if (unit >= 0xd800 && unit <= 0xdbff)
    high_surrogate_ = character;
  else
    characters += character;
  return characters;
}

std::u32string CharacterReader::Flush() {
  decoder_.Reset();
  return std::exchange(high_surrogate_, 0) != 0 ? U"\xfffd" : std::u32string();
}

}  // namespace tenora::richtext
