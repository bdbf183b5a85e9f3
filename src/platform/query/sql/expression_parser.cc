#include "platform/query/sql/expression_parser.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tenora::query {
namespace {

constexpr int kDeepestNesting = 64;
// A left-associative chain becomes a tree as deep as the chain is long.
constexpr int kLongestArithmetic = 200;

constexpr std::array<std::string_view, 35> kReserved = {
    "select", "from",   "where", "group",    "having", "order", "union", "inner", "left",
    "right",  "join",   "on",    "and",      "or",     "not",   "xor",   "eqv",   "imp",
    "in",     "like",   "is",    "between",  "null",   "as",    "by",    "asc",   "desc",
    "mod",    "exists", "all",   "distinct", "top",    "true",  "false", "with"};

}  // namespace

NestingGuard::NestingGuard(const TokenStream& tokens, int& depth) : depth_(depth) {
  if (depth_ >= kDeepestNesting) tokens.Fail(engine_error::kTooComplex, "Query is too complex.");
  ++depth_;
}

bool ExpressionParser::IsReserved(std::string_view word) {
  return std::any_of(kReserved.begin(), kReserved.end(),
                     [word](std::string_view reserved) { return EqualsNoCase(word, reserved); });
}

ExpressionPtr ExpressionParser::Make(ExpressionKind kind) const {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  return expression;
}

ExpressionPtr ExpressionParser::MakeBinary(ExpressionKind kind, std::string_view operation,
                                           ExpressionPtr left, ExpressionPtr right) const {
  ExpressionPtr expression = Make(kind);
  expression->operation = ToLower(operation);
  expression->arguments.push_back(std::move(left));
  expression->arguments.push_back(std::move(right));
  return expression;
}

bool ExpressionParser::TakeOperation(std::string_view operation) {
  return IsDigit(operation[0]) || (operation[0] >= 'a' && operation[0] <= 'z')
             ? tokens_.TakeWord(operation)
             : tokens_.TakeSymbol(operation);
}

ExpressionPtr ExpressionParser::Read() {
  const NestingGuard guard(tokens_, depth_);
  const std::size_t first = tokens_.position();
  ExpressionPtr expression = ReadImplication();
  expression->source = tokens_.SourceFrom(first);
  return expression;
}

ExpressionPtr ExpressionParser::ReadChain(ExpressionKind kind, std::string_view separator,
                                          ExpressionPtr (ExpressionParser::*operand)()) {
  ExpressionPtr first = (this->*operand)();
  if (!TakeOperation(separator)) return first;
  ExpressionPtr chain = Make(kind);
  chain->arguments.push_back(std::move(first));
  do chain->arguments.push_back((this->*operand)());
  while (TakeOperation(separator));
  return chain;
}

ExpressionPtr ExpressionParser::ReadLeftAssociative(const std::vector<std::string_view>& operations,
                                                    ExpressionPtr (ExpressionParser::*operand)()) {
  ExpressionPtr left = (this->*operand)();
  for (int length = 0;; ++length) {
    const auto operation =
        std::find_if(operations.begin(), operations.end(),
                     [this](std::string_view candidate) { return TakeOperation(candidate); });
    if (operation == operations.end()) return left;
    if (length >= kLongestArithmetic)
      tokens_.Fail(engine_error::kTooComplex, "Query is too complex.");
    const bool logical = *operation == "xor" || *operation == "eqv" || *operation == "imp";
    left = MakeBinary(logical ? ExpressionKind::kLogical : ExpressionKind::kArithmetic, *operation,
                      std::move(left), (this->*operand)());
  }
}

ExpressionPtr ExpressionParser::ReadImplication() {
  return ReadLeftAssociative({"xor", "eqv", "imp"}, &ExpressionParser::ReadOr);
}

ExpressionPtr ExpressionParser::ReadOr() {
  return ReadChain(ExpressionKind::kOr, "or", &ExpressionParser::ReadAnd);
}

ExpressionPtr ExpressionParser::ReadAnd() {
  return ReadChain(ExpressionKind::kAnd, "and", &ExpressionParser::ReadNot);
}

ExpressionPtr ExpressionParser::ReadNot() {
  if (!tokens_.TakeWord("not")) return ReadComparison();
  const NestingGuard guard(tokens_, depth_);
  ExpressionPtr expression = Make(ExpressionKind::kNot);
  expression->arguments.push_back(ReadNot());
  return expression;
}

ExpressionPtr ExpressionParser::ReadComparison() {
  constexpr std::array<std::string_view, 6> kComparisons = {"=", "<>", "<=", ">=", "<", ">"};
  const std::size_t first = tokens_.position();
  ExpressionPtr left = ReadConcat();
  for (const std::string_view comparison : kComparisons) {
    if (!tokens_.TakeSymbol(comparison)) continue;
    return MakeBinary(ExpressionKind::kCompare, comparison, std::move(left), ReadConcat());
  }
  return ReadTest(std::move(left), first);
}

// The tests that follow an operand: is null, between, in, like.
ExpressionPtr ExpressionParser::ReadTest(ExpressionPtr left, std::size_t first) {
  left->source = tokens_.SourceFrom(first);
  if (tokens_.TakeWord("is")) {
    ExpressionPtr test = Make(ExpressionKind::kIsNull);
    test->negated = tokens_.TakeWord("not");
    tokens_.ExpectWord("null");
    test->arguments.push_back(std::move(left));
    return test;
  }
  const bool negated =
      tokens_.AtWord("not") &&
      (tokens_.AtWord("between", 1) || tokens_.AtWord("in", 1) || tokens_.AtWord("like", 1));
  if (negated) tokens_.Take();
  ExpressionPtr test;
  if (tokens_.TakeWord("between")) {
    test = Make(ExpressionKind::kBetween);
    test->arguments.push_back(std::move(left));
    test->arguments.push_back(ReadConcat());
    tokens_.ExpectWord("and");
    test->arguments.push_back(ReadConcat());
  } else if (tokens_.TakeWord("in")) {
    test = ReadIn(std::move(left));
  } else if (tokens_.TakeWord("like")) {
    test = MakeBinary(ExpressionKind::kLike, "like", std::move(left), ReadConcat());
  } else {
    return left;
  }
  test->negated = negated;
  return test;
}

ExpressionPtr ExpressionParser::ReadIn(ExpressionPtr left) {
  ExpressionPtr test = Make(ExpressionKind::kIn);
  test->arguments.push_back(std::move(left));
  tokens_.ExpectSymbol("(");
  if (tokens_.AtWord("select")) {
    test->select = selects_.ReadSelect();
  } else {
    do test->arguments.push_back(Read());
    while (tokens_.TakeSymbol(","));
  }
  tokens_.ExpectSymbol(")");
  return test;
}

ExpressionPtr ExpressionParser::ReadConcat() {
  return ReadChain(ExpressionKind::kConcat, "&", &ExpressionParser::ReadSum);
}

ExpressionPtr ExpressionParser::ReadSum() {
  return ReadLeftAssociative({"+", "-"}, &ExpressionParser::ReadModulo);
}

ExpressionPtr ExpressionParser::ReadModulo() {
  return ReadLeftAssociative({"mod"}, &ExpressionParser::ReadIntegerQuotient);
}

ExpressionPtr ExpressionParser::ReadIntegerQuotient() {
  return ReadLeftAssociative({"\\"}, &ExpressionParser::ReadProduct);
}

ExpressionPtr ExpressionParser::ReadProduct() {
  return ReadLeftAssociative({"*", "/"}, &ExpressionParser::ReadSign);
}

ExpressionPtr ExpressionParser::ReadSign() {
  bool negative = false, found = false;
  while (tokens_.AtSymbol("-") || tokens_.AtSymbol("+")) {
    negative ^= tokens_.AtSymbol("-");
    found = true;
    tokens_.Take();
  }
  ExpressionPtr operand = ReadPower();
  if (!found || !negative) return operand;
  ExpressionPtr expression = Make(ExpressionKind::kNegate);
  expression->arguments.push_back(std::move(operand));
  return expression;
}

// A sign after ^ belongs to the exponent: 2^-1.
ExpressionPtr ExpressionParser::ReadPower() {
  ExpressionPtr left = ReadOperand();
  for (int length = 0; tokens_.TakeSymbol("^"); ++length) {
    if (length >= kLongestArithmetic)
      tokens_.Fail(engine_error::kTooComplex, "Query is too complex.");
    const bool negative = tokens_.TakeSymbol("-");
    ExpressionPtr right = ReadOperand();
    if (negative) {
      ExpressionPtr sign = Make(ExpressionKind::kNegate);
      sign->arguments.push_back(std::move(right));
      right = std::move(sign);
    }
    left = MakeBinary(ExpressionKind::kArithmetic, "^", std::move(left), std::move(right));
  }
  return left;
}

ExpressionPtr ExpressionParser::ReadOperand() {
  const Token& token = tokens_.Peek();
  switch (token.kind) {
    case TokenKind::kText:
    case TokenKind::kInteger:
    case TokenKind::kDecimal:
    case TokenKind::kDate: {
      ExpressionPtr literal = Make(ExpressionKind::kLiteral);
      literal->token = tokens_.position();
      literal->value = token.value;
      tokens_.Take();
      return literal;
    }
    case TokenKind::kSymbol:
      if (token.Is("(")) return ReadBracket();
      tokens_.FailHere();
    case TokenKind::kName:
      if (tokens_.AtSymbol("(", 1) && !tokens_.AtWord("in") && !tokens_.AtWord("not")) {
        if (!tokens_.AtWord("exists")) return ReadCall();
        tokens_.Take();
        tokens_.Take();
        ExpressionPtr exists = Make(ExpressionKind::kExists);
        exists->select = selects_.ReadSelect();
        tokens_.ExpectSymbol(")");
        return exists;
      }
      return ReadColumn();
    case TokenKind::kBracketedName:
      return ReadColumn();
    case TokenKind::kEnd:
      break;
  }
  tokens_.FailHere();
}

ExpressionPtr ExpressionParser::ReadBracket() {
  tokens_.ExpectSymbol("(");
  ExpressionPtr expression;
  if (tokens_.AtWord("select")) {
    expression = Make(ExpressionKind::kSubquery);
    expression->select = selects_.ReadSelect();
  } else {
    expression = Read();
  }
  tokens_.ExpectSymbol(")");
  return expression;
}

ExpressionPtr ExpressionParser::ReadCall() {
  ExpressionPtr call = Make(ExpressionKind::kCall);
  call->name = ToLower(tokens_.Take().source);
  tokens_.ExpectSymbol("(");
  if (tokens_.TakeSymbol(")")) return call;
  if (tokens_.AtSymbol("*") && tokens_.AtSymbol(")", 1)) {
    tokens_.Take();
    call->star = true;
  } else {
    do call->arguments.push_back(Read());
    while (tokens_.TakeSymbol(","));
  }
  tokens_.ExpectSymbol(")");
  return call;
}

std::string ExpressionParser::ReadName() {
  const Token& token = tokens_.Peek();
  const bool bare = token.kind == TokenKind::kName;
  if (!bare && token.kind != TokenKind::kBracketedName) tokens_.FailHere();
  if (bare && IsReserved(token.source)) tokens_.FailHere();
  return tokens_.Take().name;
}

ExpressionPtr ExpressionParser::ReadColumn() {
  const Token& token = tokens_.Peek();
  if (token.kind == TokenKind::kName) {
    ExpressionPtr constant = Make(ExpressionKind::kConstant);
    if (tokens_.TakeWord("null")) return constant;
    if (tokens_.AtWord("true") || tokens_.AtWord("false")) {
      constant->value = tokens_.AtWord("true");
      tokens_.Take();
      return constant;
    }
  }
  ExpressionPtr column = Make(ExpressionKind::kColumn);
  column->name = ReadName();
  while (tokens_.AtSymbol(".") || tokens_.AtSymbol("!")) {
    // [Forms]![Letters]![Code] is a parameter.
    const bool parameter = !column->qualifier.empty() && tokens_.AtSymbol("!");
    tokens_.Take();
    if (!column->qualifier.empty() && !parameter) tokens_.FailHere();
    if (parameter) column->qualifier += "!";
    column->qualifier += std::exchange(column->name, {});
    // After a table name even a reserved word is a column name.
    const Token& name = tokens_.Take();
    if (name.kind != TokenKind::kName && name.kind != TokenKind::kBracketedName) tokens_.FailHere();
    column->name = name.name;
  }
  return column;
}

}  // namespace tenora::query
