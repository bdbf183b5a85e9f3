// Splits a statement of the engine's SQL dialect into tokens.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/query/sql/statement_error.h"
#include "platform/runtime/text.h"
#include "platform/runtime/value.h"

namespace tenora::query {

enum class TokenKind : std::uint8_t {
  kName,           // a bare word: a name or a keyword
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
  std::string_view source = {};  // the text in the statement
  Value value = {};              // of literals
  std::string name = {};         // of names, without brackets

  bool Is(std::string_view symbol) const { return kind == TokenKind::kSymbol && source == symbol; }
};

// The statement's tokens, the last one kEnd. They point into `statement`. Raises 3075 for an
// invalid token: an unclosed string or bracket, an impossible date, a stray character; 3360 for a
// statement longer than 64 KB.
std::vector<Token> ReadTokens(std::string_view statement);

// Steps through the tokens of a statement and raises its syntax errors.
class TokenStream {
 public:
  TokenStream(std::string_view statement, const std::vector<Token>& tokens)
      : statement_(statement), tokens_(tokens) {}

  const Token& Peek(std::size_t ahead = 0) const {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
  }
  std::size_t position() const { return at_; }
  const Token& Take() {
    const Token& token = Peek();
    if (token.kind != TokenKind::kEnd) ++at_;
    return token;
  }

  bool AtWord(std::string_view word, std::size_t ahead = 0) const {
    const Token& token = Peek(ahead);
    return token.kind == TokenKind::kName && EqualsNoCase(token.source, word);
  }
  bool TakeWord(std::string_view word) {
    if (!AtWord(word)) return false;
    ++at_;
    return true;
  }
  void ExpectWord(std::string_view word) {
    if (!TakeWord(word)) FailHere();
  }

  bool AtSymbol(std::string_view symbol, std::size_t ahead = 0) const {
    return Peek(ahead).Is(symbol);
  }
  bool TakeSymbol(std::string_view symbol) {
    if (!AtSymbol(symbol)) return false;
    ++at_;
    return true;
  }
  void ExpectSymbol(std::string_view symbol) {
    if (!TakeSymbol(symbol)) FailHere();
  }

  // The text of the statement from the token at `first` up to the current one.
  std::string_view SourceFrom(std::size_t first) const {
    if (first >= at_) return {};
    const char* const begin = tokens_[first].source.data();
    const std::string_view last = tokens_[at_ - 1].source;
    return {begin, static_cast<std::size_t>(last.data() + last.size() - begin)};
  }

  [[noreturn]] void FailHere() const {
    const std::string_view rest =
        statement_.substr(static_cast<std::size_t>(Peek().source.data() - statement_.data()));
    Fail(engine_error::kSyntax,
         rest.empty() ? "Syntax error in query expression: incomplete statement."
                      : "Syntax error (missing operator) in query expression '" +
                            std::string(rest.substr(0, rest.find_first_of("\r\n"))) + "'.");
  }
  [[noreturn]] void Fail(int number, std::string_view description) const {
    throw StatementError(number, description, statement_);
  }

 private:
  std::string_view statement_;
  const std::vector<Token>& tokens_;
  std::size_t at_ = 0;
};

}  // namespace tenora::query
