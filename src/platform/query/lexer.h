// Takes a statement of the engine's SQL dialect apart.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/runtime/value.h"

namespace tenora::query {

enum class TokenKind : std::uint8_t {
  kName,           // a bare word: a name or a word of the language
  kBracketedName,  // [Property Code], `Property Code`
  kText,           // 'it''s' or "it's"
  kInteger,        // 17
  kDecimal,        // 0.5, 1E3
  kDate,           // #03/05/2026#, #14:30:00 03/05/2026#, #2026-11-21 14:30#
  kSymbol,         // ( ) , . ; * = < > <= >= <> + - / \ ^ & !
  kEnd,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string_view source = {};  // the token as it stands in the statement
  Value value = {};              // of literals
  std::string name = {};         // of names, without brackets

  bool Is(std::string_view symbol) const { return kind == TokenKind::kSymbol && source == symbol; }
};

// The statement's tokens, the last one kEnd. They point into `statement`. Raises 3075 for what is
// no token: an open text or bracket, a date that no calendar has, a stray character; 3360 for a
// statement longer than 64 KB.
std::vector<Token> ReadTokens(std::string_view statement);

}  // namespace tenora::query
