#include "platform/runtime/text.h"

#include <algorithm>

namespace tenora {

namespace {
constexpr char32_t kReplacement = 0xFFFD;
}  // namespace

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string ToLower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), LowerAscii);
  return result;
}

std::string ToUpper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  }
  return result;
}

bool EqualsNoCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() && StartsWithNoCase(left, right);
}

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  if (text.size() < start.size()) return false;
  return std::equal(start.begin(), start.end(), text.begin(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

bool EndsWithNoCase(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && EqualsNoCase(text.substr(text.size() - end.size()), end);
}

bool ContainsNoCase(std::string_view text, std::string_view part) {
  return FindNoCase(text, part) != std::string_view::npos;
}

std::size_t FindNoCase(std::string_view text, std::string_view part, std::size_t from) {
  if (from > text.size()) return std::string_view::npos;
  const auto found =
      std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), part.begin(),
                  part.end(), [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
  if (found == text.end() && !part.empty()) return std::string_view::npos;
  return static_cast<std::size_t>(found - text.begin());
}

std::string ReplaceAll(std::string text, std::string_view part, std::string_view with) {
  if (part.empty()) return text;
  std::size_t found = text.find(part);
  if (found == std::string::npos) return text;
  std::string result;
  result.reserve(text.size());
  std::size_t copied = 0;
  for (; found != std::string::npos; found = text.find(part, copied)) {
    result.append(text, copied, found - copied).append(with);
    copied = found + part.size();
  }
  return result.append(text, copied);
}

std::string ReplaceAllNoCase(std::string_view text, std::string_view part, std::string_view with) {
  if (part.empty()) return std::string(text);
  std::string result;
  std::size_t copied = 0;
  for (std::size_t found = FindNoCase(text, part); found != std::string_view::npos;
       found = FindNoCase(text, part, copied)) {
    result.append(text.substr(copied, found - copied)).append(with);
    copied = found + part.size();
  }
  return result.append(text.substr(copied));
}

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (std::size_t found = text.find(separator); found != std::string_view::npos;
       found = text.find(separator, start)) {
    pieces.emplace_back(text.substr(start, found - start));
    start = found + separator.size();
  }
  pieces.emplace_back(text.substr(start));
  return pieces;
}

char32_t TakeCodePoint(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 1) {
    text.remove_prefix(1);
    return lead;
  }
  char32_t code_point = length == 0 ? 0 : lead & (0xFFU >> (length + 1));
  bool valid = length != 0 && text.size() >= length;
  for (std::size_t i = 1; valid && i < length; ++i) {
    valid = (byte(i) & 0xC0) == 0x80;
    code_point = (code_point << 6) | (byte(i) & 0x3FU);
  }
  const bool overlong =
      (length == 3 && code_point < 0x800) || (length == 4 && code_point < 0x10000);
  const bool surrogate = code_point >= 0xD800 && code_point <= 0xDFFF;
  if (!valid || overlong || surrogate || code_point > 0x10FFFF) {
    text.remove_prefix(1);
    return kReplacement;
  }
  text.remove_prefix(length);
  return code_point;
}

void AppendUtf8(std::string& text, char32_t c) {
  if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | (c >> 6));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | (c >> 12));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    text += static_cast<char>(0xF0 | (c >> 18));
    text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  }
}

std::u16string ToUtf16(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    if (c < 0x10000) {
      result += static_cast<char16_t>(c);
    } else {
      result += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      result += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return result;
}

std::string FromUtf16(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t unit = text[i];
    const bool pair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size() &&
                      text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
    AppendUtf8(result, pair ? 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00U) : unit);
    if (pair) ++i;
  }
  return result;
}

bool IsValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::string_view before = text;
    if (TakeCodePoint(text) == kReplacement && before.size() - text.size() == 1) return false;
  }
  return true;
}

std::string_view BoundedUtf8(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  return text.substr(0, bytes);
}

}  // namespace tenora
