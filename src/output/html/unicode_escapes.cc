#include "output/html/unicode_escapes.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora::html {

using richtext::Token;

namespace {

constexpr std::int32_t kUsualFallbackLength = 1;

bool IsReferable(char32_t code_point) {
  const bool control = code_point < 0x20 && code_point != U'\t';
  const bool surrogate = code_point >= 0xD800 && code_point <= 0xDFFF;
  return !control && !surrogate && code_point <= 0x10FFFF;
}

}  // namespace

void UnicodeEscapes::CloseGroup() {
  if (!lengths_.empty() && lengths_.back().depth == depth_ && depth_ > 0) lengths_.pop_back();
  if (depth_ > 0) --depth_;
}

void UnicodeEscapes::SetFallbackLength(std::int32_t length) {
  length = std::max(length, 0);
  if (!lengths_.empty() && lengths_.back().depth == depth_) {
    lengths_.back().length = length;
  } else {
    lengths_.push_back({depth_, length});
  }
}

std::string UnicodeEscapes::Reference(std::int32_t number) {
  to_skip_ = lengths_.empty() ? kUsualFallbackLength : lengths_.back().length;
  const auto high = std::exchange(high_surrogate_, 0);
  // Escapes are signed 16-bit numbers: U+8000 and above come as negative ones.
  if (number < 0) number += 0x10000;
  if (number < 0) return {};
  auto code_point = static_cast<char32_t>(number);
  if (code_point >= 0xD800 && code_point <= 0xDBFF) {
    high_surrogate_ = code_point;
    return {};
  }
  if (high != 0 && code_point >= 0xDC00 && code_point <= 0xDFFF)
    code_point = 0x10000 + ((high - 0xD800) << 10) + (code_point - 0xDC00);
  if (!IsReferable(code_point)) return {};
  return "&#" + std::to_string(static_cast<std::uint32_t>(code_point)) + ";";
}

bool UnicodeEscapes::SkipFallback(Token& token) {
  if (to_skip_ == 0) {
    if (!token.IsWord("u")) high_surrogate_ = 0;
    return false;
  }
  switch (token.kind) {
    case Token::Kind::kOpen:
    case Token::Kind::kClose:
      to_skip_ = 0;
      return false;
    case Token::Kind::kText:
      while (to_skip_ > 0 && !token.text.empty()) {
        const char32_t skipped = TakeCodePoint(token.text);
        if (skipped != U'\r' && skipped != U'\n') --to_skip_;
      }
      if (!token.text.empty()) high_surrogate_ = 0;
      return token.text.empty();
    default:
      --to_skip_;
      return true;
  }
}

}  // namespace tenora::html
