#include "platform/richtext/read/field_display.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/richtext/document_text.h"
#include "platform/richtext/read/equation_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kLongest = 4096;  // of an instruction that is looked at, bytes
constexpr int kUndecided = 25;          // \ffres: as \ffdefres says
constexpr int kLargestSize = 1638;      // points

// The text of a piece of source.
std::string Shown(std::string_view source) {
  return PlainText(ReadRtf("{\\rtf1\\ansi " + std::string(source) + "}").blocks);
}

std::optional<long> Number(std::string_view text) {
  long number = 0;
  const bool hexadecimal = StartsWithNoCase(text, "0x");
  if (hexadecimal) text.remove_prefix(2);
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The next word of an instruction's text, or the next text in quotation marks.
std::string_view TakeWord(std::string_view* text) {
  text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
  const bool quoted = text->starts_with('"');
  if (quoted) text->remove_prefix(1);
  const std::string_view word = text->substr(0, text->find(quoted ? '"' : ' '));
  text->remove_prefix(std::min(word.size() + 1, text->size()));
  return word;
}

// What a \formfield group says.
struct FormField {
  std::optional<int> result;
  int default_result = 0;
  std::vector<std::string_view> entries;  // of a list, as source

  int Result() const { return result && *result != kUndecided ? *result : default_result; }
};

FormField ReadFormField(std::string_view instruction) {
  FormField field;
  Tokenizer tokens(instruction);
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    if (token.IsWord("ffres")) field.result = token.param;
    if (token.IsWord("ffdefres")) field.default_result = token.param;
    if (!token.IsWord("ffl")) continue;
    const std::size_t begin = tokens.position();
    tokens.LeaveGroup();
    if (tokens.position() > begin)
      field.entries.push_back(instruction.substr(begin, tokens.position() - 1 - begin));
  }
  return field;
}

}  // namespace

std::optional<SymbolField> SymbolOf(std::string_view instruction) {
  if (!StartsWithNoCase(instruction, "SYMBOL ") || instruction.size() > kLongest)
    return std::nullopt;
  const std::string shown = Shown(instruction);
  std::string_view text = shown;
  TakeWord(&text);
  const auto code = Number(TakeWord(&text));
  if (!code || *code < 0x20 || *code > 0xffff) return std::nullopt;
  SymbolField symbol;
  symbol.code = static_cast<char32_t>(*code);
  while (!text.empty()) {
    const std::string_view option = TakeWord(&text);
    if (EqualsNoCase(option, "\\f")) {
      symbol.font = TakeWord(&text);
    } else if (EqualsNoCase(option, "\\s")) {
      const auto points = Number(TakeWord(&text));
      if (points && *points > 0 && *points <= kLargestSize)
        symbol.half_points = static_cast<int>(*points) * 2;
    } else if (EqualsNoCase(option, "\\u")) {
      symbol.unicode = true;
    }
  }
  return symbol;
}

std::string TextOfInstruction(std::string_view instruction) {
  instruction = TrimBlanks(instruction);
  if (instruction.size() > kLongest) return {};
  if (StartsWithNoCase(instruction, "FORMCHECKBOX"))
    return ReadFormField(instruction).Result() != 0 ? "\u2612" : "\u2610";
  if (StartsWithNoCase(instruction, "FORMDROPDOWN")) {
    const FormField field = ReadFormField(instruction);
    const auto chosen = static_cast<std::size_t>(field.Result());
    return chosen < field.entries.size() ? Shown(field.entries[chosen]) : std::string();
  }
  const bool equation = StartsWithNoCase(instruction, "EQ ");
  const bool button =
      StartsWithNoCase(instruction, "MACROBUTTON ") || StartsWithNoCase(instruction, "GOTOBUTTON ");
  if (!equation && !button) return {};
  const std::string shown = Shown(instruction);
  std::string_view text = shown;
  TakeWord(&text);
  if (equation) return TextOfEquation(text);
  TakeWord(&text);
  // \* MERGEFORMAT and the like are about the text.
  for (text = TrimBlanks(text); text.starts_with("\\* "); text = TrimBlanks(text)) {
    TakeWord(&text);
    TakeWord(&text);
  }
  return std::string(TrimBlanks(text));
}

}  // namespace tenora::richtext
