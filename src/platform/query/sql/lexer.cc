#include "platform/query/sql/lexer.h"

#include <charconv>

#include "platform/query/sql/date_literal.h"
#include "platform/query/sql/statement_error.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::size_t kLongestStatement = 64 * 1024;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool StartsName(char c) {
  const char lower = LowerAscii(c);
  return (lower >= 'a' && lower <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool ContinuesName(char c) { return StartsName(c) || IsDigit(c) || c == '$'; }

class Lexer {
 public:
  explicit Lexer(std::string_view statement) : statement_(statement) {}

  std::vector<Token> ReadAll() {
    std::vector<Token> tokens;
    tokens.reserve(statement_.size() / 4);
    while (SkipBlanks()) tokens.push_back(ReadOne());
    tokens.emplace_back();
    tokens.back().source = statement_.substr(statement_.size());
    return tokens;
  }

 private:
  bool SkipBlanks() {
    while (at_ < statement_.size() && IsBlank(statement_[at_])) ++at_;
    return at_ < statement_.size();
  }

  char Peek(std::size_t ahead = 0) const {
    return at_ + ahead < statement_.size() ? statement_[at_ + ahead] : '\0';
  }

  Token ReadOne() {
    const char c = Peek();
    if (StartsName(c)) return ReadWord();
    if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)))) return ReadNumber();
    switch (c) {
      case '[':
        return ReadBracketed(']');
      case '`':
        return ReadBracketed('`');
      case '\'':
      case '"':
        return ReadText(c);
      case '#':
        return ReadDate();
      default:
        return ReadSymbol();
    }
  }

  Token Make(TokenKind kind, std::size_t start) {
    return {.kind = kind, .source = statement_.substr(start, at_ - start)};
  }

  Token ReadWord() {
    const std::size_t start = at_;
    while (at_ < statement_.size() && ContinuesName(statement_[at_])) ++at_;
    Token token = Make(TokenKind::kName, start);
    token.name = token.source;
    return token;
  }

  Token ReadBracketed(char close) {
    const std::size_t start = at_;
    const std::size_t end = statement_.find(close, start + 1);
    if (end == std::string_view::npos)
      Fail("Invalid bracketing of name '" + std::string(statement_.substr(start)) + "'.");
    at_ = end + 1;
    Token token = Make(TokenKind::kBracketedName, start);
    token.name = TrimBlanks(statement_.substr(start + 1, end - start - 1));
    return token;
  }

  Token ReadText(char quote) {
    const std::size_t start = at_++;
    std::string text;
    for (;; ++at_) {
      if (at_ == statement_.size())
        Fail("Syntax error in string in query expression '" +
             std::string(statement_.substr(start)) + "'.");
      if (statement_[at_] == quote) {
        if (Peek(1) != quote) break;
        ++at_;
      }
      text.push_back(statement_[at_]);
    }
    ++at_;
    Token token = Make(TokenKind::kText, start);
    token.value = std::move(text);
    return token;
  }

  void SkipDigits() {
    while (IsDigit(Peek())) ++at_;
  }

  Token ReadNumber() {
    const std::size_t start = at_;
    SkipDigits();
    bool whole = true;
    if (Peek() == '.') {
      whole = false;
      ++at_;
      SkipDigits();
    }
    const bool exponent =
        LowerAscii(Peek()) == 'e' &&
        (IsDigit(Peek(1)) || ((Peek(1) == '+' || Peek(1) == '-') && IsDigit(Peek(2))));
    if (exponent) {
      whole = false;
      at_ += 2;
      SkipDigits();
    }
    Token token = Make(whole ? TokenKind::kInteger : TokenKind::kDecimal, start);
    token.value = NumberValue(token.source, whole);
    return token;
  }

  Value NumberValue(std::string_view digits, bool whole) {
    const char* const end = digits.data() + digits.size();
    std::int64_t integer = 0;
    if (whole && std::from_chars(digits.data(), end, integer).ec == std::errc()) return integer;
    double number = 0;
    if (std::from_chars(digits.data(), end, number).ec != std::errc())
      Fail("Syntax error in number in query expression '" + std::string(digits) + "'.");
    return number;
  }

  Token ReadDate() {
    const std::size_t start = at_;
    const std::size_t end = statement_.find('#', start + 1);
    const std::string_view text =
        statement_.substr(start, end == std::string_view::npos ? end : end - start + 1);
    const std::optional<Date> date =
        text.size() > 2 ? ReadDateLiteral(text.substr(1, text.size() - 2)) : std::nullopt;
    if (end == std::string_view::npos || !date)
      Fail("Syntax error in date in query expression '" + std::string(text) + "'.");
    at_ = end + 1;
    Token token = Make(TokenKind::kDate, start);
    token.value = *date;
    return token;
  }

  Token ReadSymbol() {
    constexpr std::string_view kSingles = "(),.;*=<>+-/\\^&!";
    const std::size_t start = at_;
    const std::string_view pair = statement_.substr(at_, 2);
    if (pair == "<=" || pair == ">=" || pair == "<>") {
      at_ += 2;
    } else if (kSingles.find(statement_[at_]) != std::string_view::npos) {
      ++at_;
    } else {
      Fail("Syntax error in query expression: character '" + std::string(1, statement_[at_]) +
           "'.");
    }
    return Make(TokenKind::kSymbol, start);
  }

  [[noreturn]] void Fail(const std::string& description) const {
    throw StatementError(engine_error::kSyntax, description, statement_);
  }

  std::string_view statement_;
  std::size_t at_ = 0;
};

}  // namespace

std::vector<Token> ReadTokens(std::string_view statement) {
  if (statement.size() > kLongestStatement)
    throw StatementError(engine_error::kTooComplex, "Query is too complex.", statement);
  return Lexer(statement).ReadAll();
}

}  // namespace tenora::query
