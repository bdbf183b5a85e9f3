#include "output/html/link_target.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/richtext/rtf_tokenizer.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

using richtext::Token;

constexpr std::size_t kLongestTarget = 2000;  // bytes; browsers and servers take no more
constexpr std::size_t kLongestInstruction = 20'000;

// The text of an instruction's RTF source.
std::string InstructionText(std::string_view source) {
  std::string text;
  bool skip_fallback = false;
  const auto add = [&](char32_t c) {
    if (!skip_fallback) AppendUtf8(text, c);
    skip_fallback = false;
  };
  richtext::Tokenizer tokens(source);
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    if (text.size() > kLongestInstruction) break;
    if (token.kind == Token::Kind::kText) {
      if (skip_fallback) token.text.remove_prefix(1);
      skip_fallback = false;
      text += token.text;
    } else if (token.kind == Token::Kind::kByte) {
      add(static_cast<unsigned char>(token.param));
    } else if (token.IsEscapedCharacter()) {
      add(static_cast<unsigned char>(token.text.front()));
    } else if (token.IsWord("u")) {
      skip_fallback = false;
      add(static_cast<char32_t>(token.param < 0 ? token.param + 0x10000 : token.param));
      skip_fallback = true;
    }
  }
  return text;
}

// The next word or quoted argument; `quoted` says which.
std::string_view TakeArgument(std::string_view* text, bool* quoted) {
  text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
  *quoted = text->starts_with('"');
  if (*quoted) text->remove_prefix(1);
  const std::size_t end = std::min(text->find(*quoted ? '"' : ' '), text->size());
  const std::string_view argument = text->substr(0, end);
  text->remove_prefix(std::min(end + 1, text->size()));
  return argument;
}

// The address in the text of a field's instruction, with the place in its page; empty for other
// fields and for links within the document.
std::string Address(std::string_view instruction) {
  bool quoted = false;
  if (!EqualsNoCase(TakeArgument(&instruction, &quoted), "HYPERLINK")) return {};
  std::string address, place;
  while (!instruction.empty()) {
    const std::string_view argument = TakeArgument(&instruction, &quoted);
    if (quoted || !argument.starts_with('\\')) {
      if (address.empty()) address = TrimBlanks(argument);
    } else if (EqualsNoCase(argument, "\\l")) {
      place = TakeArgument(&instruction, &quoted);
    } else if (EqualsNoCase(argument, "\\o") || EqualsNoCase(argument, "\\t")) {
      TakeArgument(&instruction, &quoted);  // a screen tip, a frame
    }
  }
  const bool complete = address.empty() || place.empty() || address.find('#') != std::string::npos;
  return complete ? address : address + "#" + place;
}

// "" for an address that is refused.
std::string Encoded(std::string_view address) {
  constexpr std::string_view kUnsafe = "\"<>\\^`{|}' ";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string url;
  for (const char c : address) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) return {};
    if (byte < 0x80 && kUnsafe.find(c) == std::string_view::npos) {
      url += c;
    } else {
      url += {'%', kDigits[byte / 16], kDigits[byte % 16]};
    }
  }
  return url.size() > kLongestTarget ? std::string() : url;
}

std::string SafeTarget(std::string_view address) {
  constexpr std::array<std::string_view, 3> kSchemes{"http://", "https://", "mailto:"};
  const auto begins = [&](std::string_view scheme) { return StartsWithNoCase(address, scheme); };
  return std::ranges::any_of(kSchemes, begins) ? Encoded(address) : std::string();
}

}  // namespace

std::string LinkTarget(const richtext::Field* field) {
  for (; field != nullptr; field = field->outer.get()) {
    const std::string text = InstructionText(field->instruction);
    const std::string address = Address(text);
    if (!address.empty()) return SafeTarget(address);
  }
  return {};
}

}  // namespace tenora::html
