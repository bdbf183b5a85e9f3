#include "output/html/html_tokenizer.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

constexpr std::string_view kBinary = "bin";

constexpr auto kEndsText = [] {
  std::array<bool, 256> table{};
  table['\\'] = table['{'] = table['}'] = true;
  return table;
}();

std::size_t EndOfText(std::string_view source, std::size_t position) {
  while (position < source.size() && !kEndsText[static_cast<unsigned char>(source[position])])
    ++position;
  return position;
}

// Behind the control token at `position`; only \binN needs more than its first two characters.
std::size_t EndOfControl(std::string_view source, std::size_t position) {
  if (source.substr(position + 1, kBinary.size()) != kBinary)
    return std::min(position + 2, source.size());
  Tokenizer tokens(source, position);
  Token word;
  tokens.Next(word);
  return tokens.position();
}

}  // namespace

std::int32_t ClampedNumber(std::string_view digits) {
  const bool negative = !digits.empty() && digits.front() == '-';
  if (negative) digits.remove_prefix(1);
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  std::int64_t number = 0;
  for (const char c : digits) {
    if (!IsDigit(c)) break;
    number = std::min(number * 10 + (c - '0'), kMost);
  }
  return static_cast<std::int32_t>(negative ? -number : number);
}

std::optional<std::int32_t> Token::Number() const {
  if (parameter.empty()) return std::nullopt;
  return ClampedNumber(parameter);
}

bool Tokenizer::Next(Token& token) {
  if (position_ >= source_.size()) return false;
  token.parameter = {};
  switch (source_[position_]) {
    case '{':
    case '}':
      token.kind = source_[position_] == '{' ? Token::Kind::kOpenGroup : Token::Kind::kCloseGroup;
      token.text = source_.substr(position_++, 1);
      break;
    case '\\':
      TakeControl(token);
      break;
    default: {
      const std::size_t end = EndOfText(source_, position_);
      token.kind = Token::Kind::kText;
      token.text = source_.substr(position_, end - position_);
      position_ = end;
    }
  }
  return true;
}

void Tokenizer::TakeControl(Token& token) {
  const char sign = position_ + 1 < source_.size() ? source_[position_ + 1] : '\0';
  if (IsLetter(sign)) return TakeControlWord(token);
  if (sign == '\'') {
    token.kind = Token::Kind::kHexEscape;
    token.text = source_.substr(position_ + 2, 2);
    position_ = std::min(position_ + 4, source_.size());
    return;
  }
  const bool escaped = sign == '\\' || sign == '{' || sign == '}';
  token.kind = escaped ? Token::Kind::kCharacter : Token::Kind::kControlWord;
  token.text = source_.substr(position_ + 1, 1);
  position_ = std::min(position_ + 2, source_.size());
}

void Tokenizer::TakeControlWord(Token& token) {
  const std::size_t start = position_ + 1;
  std::size_t end = start;
  while (end < source_.size() && IsLetter(source_[end])) ++end;
  token.kind = Token::Kind::kControlWord;
  token.text = source_.substr(start, end - start);

  std::size_t digits = end;
  if (digits < source_.size() && source_[digits] == '-') ++digits;
  std::size_t behind = digits;
  while (behind < source_.size() && IsDigit(source_[behind])) ++behind;
  if (behind > digits) {
    token.parameter = source_.substr(end, behind - end);
    end = behind;
  }
  if (end < source_.size() && source_[end] == ' ') ++end;
  if (token.text == kBinary) {
    const std::size_t count =
        static_cast<std::size_t>(std::max(token.Number().value_or(0), std::int32_t{0}));
    end += std::min(count, source_.size() - end);
  }
  position_ = end;
}

void Tokenizer::LeaveGroup() { position_ = EndOfGroup(source_, position_); }

std::size_t EndOfGroup(std::string_view source, std::size_t position) {
  std::size_t depth = 1;
  while ((position = EndOfText(source, position)) < source.size()) {
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

}  // namespace tenora::html
