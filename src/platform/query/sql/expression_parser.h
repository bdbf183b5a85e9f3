// Recursive-descent parser for expressions, from "or" down to names and literals.
#pragma once

#include <memory>

#include "platform/query/sql/lexer.h"
#include "platform/query/sql/syntax.h"

namespace tenora::query {

// Reads subqueries inside expressions.
class SelectReader {
 public:
  virtual ~SelectReader() = default;
  virtual std::unique_ptr<Select> ReadSelect() = 0;
};

// Counts one level of nesting for its lifetime; raises 3360 beyond the limit.
class NestingGuard {
 public:
  NestingGuard(const TokenStream& tokens, int& depth);
  ~NestingGuard() { --depth_; }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;

 private:
  int& depth_;
};

class ExpressionParser {
 public:
  ExpressionParser(TokenStream& tokens, SelectReader& selects, int& depth)
      : tokens_(tokens), selects_(selects), depth_(depth) {}

  ExpressionPtr Read();
  // A keyword, which ends an expression or a table name.
  static bool IsReserved(std::string_view word);
  // A name, bare or in brackets.
  std::string ReadName();

 private:
  ExpressionPtr ReadImplication();
  ExpressionPtr ReadOr();
  ExpressionPtr ReadAnd();
  ExpressionPtr ReadNot();
  ExpressionPtr ReadComparison();
  ExpressionPtr ReadTest(ExpressionPtr left, std::size_t first);
  ExpressionPtr ReadIn(ExpressionPtr left);
  ExpressionPtr ReadConcat();
  ExpressionPtr ReadSum();
  ExpressionPtr ReadModulo();
  ExpressionPtr ReadIntegerQuotient();
  ExpressionPtr ReadProduct();
  ExpressionPtr ReadSign();
  ExpressionPtr ReadPower();
  ExpressionPtr ReadOperand();
  ExpressionPtr ReadBracket();
  ExpressionPtr ReadCall();
  ExpressionPtr ReadColumn();

  ExpressionPtr Make(ExpressionKind kind) const;
  ExpressionPtr MakeBinary(ExpressionKind kind, std::string_view operation, ExpressionPtr left,
                           ExpressionPtr right) const;
  // Operands separated by the same word or symbol, as one flat expression.
  ExpressionPtr ReadChain(ExpressionKind kind, std::string_view separator,
                          ExpressionPtr (ExpressionParser::*operand)());
  ExpressionPtr ReadLeftAssociative(const std::vector<std::string_view>& operations,
                                    ExpressionPtr (ExpressionParser::*operand)());
  bool TakeOperation(std::string_view operation);

  TokenStream& tokens_;
  SelectReader& selects_;
  int& depth_;
};

}  // namespace tenora::query
