#include "platform/richtext/rtf_tokenizer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr auto kIsText = [] {
  std::array<bool, 256> table{};
  for (std::size_t c = 0x20; c < 0x7f; ++c) table[c] = c != '\\' && c != '{' && c != '}';
  return table;
}();

bool IsText(char c) { return kIsText[static_cast<unsigned char>(c)]; }

constexpr auto kEndsLiteralText = [] {
  std::array<bool, 256> table{};
  table['\\'] = table['{'] = table['}'] = true;
  return table;
}();

std::size_t EndOfLiteralText(std::string_view source, std::size_t position) {
  while (position < source.size() &&
         !kEndsLiteralText[static_cast<unsigned char>(source[position])])
    ++position;
  return position;
}

// The end of the control word or symbol at `position`; only \binN needs more than its first two
// characters.
std::size_t EndOfControl(std::string_view source, std::size_t position) {
  if (!source.substr(position + 1).starts_with("bin")) return std::min(position + 2, source.size());
  Tokenizer tokens(source.substr(position));
  tokens.Next();
  return position + tokens.position();
}

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

Token Tokenizer::Next() {
  while (position_ < source_.size()) {
    const char c = source_[position_];
    if (form_ == Form::kLiteral && !kEndsLiteralText[static_cast<unsigned char>(c)])
      return LiteralText();
    if (IsText(c)) {
      const std::size_t start = position_;
      while (position_ < source_.size() && IsText(source_[position_])) ++position_;
      return {Token::Kind::kText, source_.substr(start, position_ - start)};
    }
    ++position_;
    if (c == '{') return {Token::Kind::kOpen};
    if (c == '}') return {Token::Kind::kClose};
    if (c == '\\') return Control();
    if (c == '\t') return {Token::Kind::kWord, "tab"};
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) return {Token::Kind::kByte, {}, byte, true};
    // Line ends and other control characters have no meaning.
  }
  return {};
}

Token Tokenizer::LiteralText() {
  const std::size_t start = position_;
  position_ = EndOfLiteralText(source_, position_);
  return {Token::Kind::kText, source_.substr(start, position_ - start)};
}

void Tokenizer::LeaveGroup() { position_ = EndOfGroup(source_, position_); }

Token Tokenizer::Control() {
  const bool literal = form_ == Form::kLiteral;
  if (position_ >= source_.size()) return {literal ? Token::Kind::kSymbol : Token::Kind::kEnd};
  const char c = source_[position_];
  if (IsWordLetter(c)) return Word();
  ++position_;
  if (c == '\'') return HexByte();
  if (!literal && (c == '\r' || c == '\n')) return {Token::Kind::kWord, "par"};
  if (!literal && c == '\t') return {Token::Kind::kWord, "tab"};
  return {Token::Kind::kSymbol, source_.substr(position_ - 1, 1)};
}

Token Tokenizer::Word() {
  const std::size_t start = position_;
  while (position_ < source_.size() && IsWordLetter(source_[position_])) ++position_;
  Token token{Token::Kind::kWord, source_.substr(start, position_ - start)};
  token.param = Parameter(&token.has_param);
  if (position_ < source_.size() && source_[position_] == ' ') ++position_;
  if (token.text == "bin") {
    const std::size_t size = std::min<std::size_t>(
        static_cast<std::size_t>(std::max(token.param, 0)), source_.size() - position_);
    token.kind = Token::Kind::kBinary;
    token.text = source_.substr(position_, size);
    position_ += size;
  }
  return token;
}

Token Tokenizer::HexByte() {
  if (form_ == Form::kLiteral) {
    const std::string_view two = source_.substr(position_, 2);
    position_ += two.size();
    return {Token::Kind::kByte, two};
  }
  int value = 0, digits = 0;
  while (digits < 2 && position_ < source_.size() && HexDigit(source_[position_]) >= 0) {
    value = value * 16 + HexDigit(source_[position_++]);
    ++digits;
  }
  return {Token::Kind::kByte, {}, value, true};
}

int Tokenizer::Parameter(bool* present) {
  std::size_t at = position_;
  const bool negative = at < source_.size() && source_[at] == '-';
  if (negative) ++at;
  if (at >= source_.size() || !IsDigit(source_[at])) return 0;
  std::int64_t value = 0;
  for (; at < source_.size() && IsDigit(source_[at]); ++at)
    value =
        std::min<std::int64_t>(value * 10 + (source_[at] - '0'), std::numeric_limits<int>::max());
  position_ = at;
  *present = true;
  return static_cast<int>(negative ? -value : value);
}

std::size_t EndOfGroup(std::string_view source, std::size_t position) {
  std::size_t depth = 1;
  while ((position = EndOfLiteralText(source, position)) < source.size()) {
    if (source[position] == '\\') {
      position = EndOfControl(source, position);
      continue;
    }
    depth += source[position] == '{' ? 1 : -1;
    ++position;
    if (depth == 0) break;
  }
  return position;
}

}  // namespace tenora::richtext
