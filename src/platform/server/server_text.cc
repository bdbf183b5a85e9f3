#include <charconv>

#include "platform/server/server_connection.h"

namespace tenora::server {
namespace {

std::string Quoted(std::string_view text, char quote) {
  std::string result(1, quote);
  for (const char c : text) {
    if (c == quote) result += quote;
    result += c;
  }
  return result + quote;
}

}  // namespace

ServerError::ServerError(int number, const std::string& description, std::string state)
    : RuntimeError(number, description, "DAO.Database"),
      failure_(state.empty() && number == server_error::kConnectionFailed
                   ? ServerFailure::kNotConnected
                   : ServerFailure::kRefused),
      state_(std::move(state)) {}

std::int64_t Result::Integer(int row, int column) const {
  const std::string_view text = Text(row, column);
  std::int64_t number = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (status != std::errc() || end != text.data() + text.size()) {
    throw ServerError(server_error::kCallFailed,
                      "The server gave '" + std::string(text) + "' where a number was expected.");
  }
  return number;
}

std::string Result::BytesOf(int row, int column) const {
  if (IsNull(row, column)) return {};
  const std::string_view text = Text(row, column);
  std::string bytes;
  bool good = text.starts_with("\\x") && text.size() % 2 == 0;
  for (std::size_t i = 2; good && i < text.size(); i += 2) {
    constexpr int kHexadecimal = 16;
    unsigned char byte = 0;
    const char* const end = text.data() + i + 2;
    good = std::from_chars(text.data() + i, end, byte, kHexadecimal).ptr == end;
    bytes += static_cast<char>(byte);
  }
  if (good) return bytes;
  throw ServerError(server_error::kCallFailed,
                    "The server gave '" + std::string(text) + "' where bytes were expected.");
}

// With standard_conforming_strings, which every connection of ours sets.
std::string Literal(std::string_view text) { return Quoted(text, '\''); }
std::string Name(std::string_view text) { return Quoted(text, '"'); }

void AppendCopyField(std::optional<std::string_view> field, std::string& line) {
  if (!field) {
    line += "\\N";
    return;
  }
  for (const char c : *field) {
    switch (c) {
      case '\\':
        line += "\\\\";
        break;
      case '\t':
        line += "\\t";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line += c;
    }
  }
}

std::string HexBytes(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "\\x";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
  return text;
}

std::string ArrayOf(std::span<const std::string> elements) {
  std::string text = "{";
  for (const std::string& element : elements) {
    if (text.size() > 1) text += ',';
    text += '"';
    for (const char c : element) {
      if (c == '\\' || c == '"') text += '\\';
      text += c;
    }
    text += '"';
  }
  return text + "}";
}

}  // namespace tenora::server
