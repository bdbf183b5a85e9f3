#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <string>

#include "platform/query/functions/format_function.h"
#include "platform/query/functions/functions.h"
#include "platform/query/functions/like.h"
#include "platform/query/values/collation.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using Arguments = std::span<const Value>;

constexpr std::int64_t kLongestText = 1 << 20;  // UTF-16 units; for functions that generate text

const std::string& Text(const Value& value) { return std::get<std::string>(value); }
std::int64_t Integer(const Value& value) { return std::get<std::int64_t>(value); }

RuntimeError BadArgument() { return StandardError(error_number::kInvalidProcedureCall); }

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Counts and positions are UTF-16 units, as the engine counts.
std::size_t Length(std::string_view text) {
  return IsAscii(text) ? text.size() : ToUtf16(text).size();
}

std::string Part(std::string_view text, std::int64_t start, std::int64_t count) {
  if (start < 0 || count < 0) throw BadArgument();
  const auto from = static_cast<std::size_t>(start), size = static_cast<std::size_t>(count);
  if (IsAscii(text)) return from >= text.size() ? "" : std::string(text.substr(from, size));
  const std::u16string units = ToUtf16(text);
  return from >= units.size() ? "" : FromUtf16(std::u16string_view(units).substr(from, size));
}

Value Left(const FunctionContext&, Arguments a) { return Part(Text(a[0]), 0, Integer(a[1])); }

Value Right(const FunctionContext&, Arguments a) {
  const auto length = static_cast<std::int64_t>(Length(Text(a[0])));
  if (Integer(a[1]) < 0) throw BadArgument();
  return Part(Text(a[0]), std::max<std::int64_t>(length - Integer(a[1]), 0), length);
}

Value MidToEnd(const FunctionContext&, Arguments a) {
  return Part(Text(a[0]), Integer(a[1]) - 1, static_cast<std::int64_t>(Text(a[0]).size()));
}

Value Mid(const FunctionContext&, Arguments a) {
  return Part(Text(a[0]), Integer(a[1]) - 1, Integer(a[2]));
}

Value Len(const FunctionContext&, Arguments a) {
  return static_cast<std::int64_t>(Length(Text(a[0])));
}

icu::UnicodeString Unicode(const std::string& text) { return icu::UnicodeString::fromUTF8(text); }

std::string Utf8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

Value Upper(const FunctionContext&, Arguments a) {
  if (IsAscii(Text(a[0]))) return ToUpper(Text(a[0]));
  return Utf8(Unicode(Text(a[0])).toUpper(icu::Locale::getRoot()));
}

Value Lower(const FunctionContext&, Arguments a) {
  if (IsAscii(Text(a[0]))) return ToLower(Text(a[0]));
  return Utf8(Unicode(Text(a[0])).toLower(icu::Locale::getRoot()));
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

Value Trim(const FunctionContext&, Arguments a) { return std::string(TrimBlanks(Text(a[0]))); }
Value LTrim(const FunctionContext&, Arguments a) {
  return std::string(WithoutLeadingBlanks(Text(a[0])));
}
Value RTrim(const FunctionContext&, Arguments a) {
  return std::string(WithoutTrailingBlanks(Text(a[0])));
}

// The text to search: case-insensitive unless `compare` is 0.
icu::UnicodeString Searchable(const std::string& text, std::int64_t compare) {
  icu::UnicodeString units = Unicode(text);
  if (compare == 0) return units;
  // Folded one letter at a time, so that positions remain those of the text.
  for (std::int32_t i = 0; i < units.length(); ++i)
    if (!U16_IS_SURROGATE(units.charAt(i)))
      units.setCharAt(i, static_cast<char16_t>(u_foldCase(units.charAt(i), U_FOLD_CASE_DEFAULT)));
  return units;
}

// The 1-based position of `part` at or after `start`, 0 if not found.
std::int64_t Find(std::int64_t start, const std::string& text, const std::string& part,
                  std::int64_t compare) {
  if (start < 1) throw BadArgument();
  const icu::UnicodeString where = Searchable(text, compare), what = Searchable(part, compare);
  if (start > where.length() + std::int64_t{1} || where.isEmpty()) return 0;
  if (what.isEmpty()) return start;
  return where.indexOf(what, static_cast<std::int32_t>(start - 1)) + 1;
}

// The 1-based position of the last `part` that ends at or before `end`, 0 when it is not found; an
// `end` of -1 is the text's.
std::int64_t FindLast(const std::string& text, const std::string& part, std::int64_t end,
                      std::int64_t compare) {
  if (end < -1 || end == 0) throw BadArgument();
  const icu::UnicodeString where = Searchable(text, compare), what = Searchable(part, compare);
  if (end == -1) end = where.length();
  if (end > where.length() || where.isEmpty()) return 0;
  if (what.isEmpty()) return end;
  return where.lastIndexOf(what, 0, static_cast<std::int32_t>(end)) + 1;
}

Value InStr(const FunctionContext&, Arguments a) { return Find(1, Text(a[0]), Text(a[1]), 1); }
Value InStrFrom(const FunctionContext&, Arguments a) {
  return Find(Integer(a[0]), Text(a[1]), Text(a[2]), 1);
}
Value InStrCompare(const FunctionContext&, Arguments a) {
  return Find(Integer(a[0]), Text(a[1]), Text(a[2]), Integer(a[3]));
}

Value InStrRev(const FunctionContext&, Arguments a) {
  return FindLast(Text(a[0]), Text(a[1]), a.size() > 2 ? Integer(a[2]) : -1,
                  a.size() > 3 ? Integer(a[3]) : 1);
}

Value Replace(const FunctionContext&, Arguments a) {
  if (Text(a[1]).empty()) return Text(a[0]);
  const std::size_t pieces = Text(a[0]).size() / Text(a[1]).size() + 1;
  if (pieces * Text(a[2]).size() > static_cast<std::size_t>(kLongestText) * 16)
    throw StandardError(error_number::kOverflow);
  return ReplaceAllNoCase(Text(a[0]), Text(a[1]), Text(a[2]));
}

std::string Repeated(std::int64_t count, std::string_view character) {
  if (count < 0 || count > kLongestText) throw BadArgument();
  std::string text;
  for (std::int64_t i = 0; i < count; ++i) text += character;
  return text;
}

Value Space(const FunctionContext&, Arguments a) { return Repeated(Integer(a[0]), " "); }

Value String(const FunctionContext&, Arguments a) {
  return Repeated(Integer(a[0]), Part(Text(a[1]), 0, 1));
}

Value Reverse(const FunctionContext&, Arguments a) { return Utf8(Unicode(Text(a[0])).reverse()); }

Value Asc(const FunctionContext&, Arguments a) {
  std::string_view text = Text(a[0]);
  if (text.empty()) throw BadArgument();
  return static_cast<std::int64_t>(TakeCodePoint(text));
}

Value Chr(const FunctionContext&, Arguments a) {
  if (Integer(a[0]) < 1 || Integer(a[0]) > 0xFFFF) throw BadArgument();
  std::string text;
  AppendUtf8(text, static_cast<char32_t>(Integer(a[0])));
  return text;
}

Value StrComp(const FunctionContext& context, Arguments a) {
  return std::int64_t{context.collation.Compare(Text(a[0]), Text(a[1]))};
}

Value Like(const FunctionContext& context, Arguments a) {
  return MatchesLike(Text(a[0]), Text(a[1]), context.collation);
}

// a & b: null counts as empty, but two nulls give null.
Value Concat(const FunctionContext&, Arguments a) {
  if (IsNull(a[0]) && IsNull(a[1])) return Null{};
  return TextOf(a[0]) + TextOf(a[1]);
}

Value ToTextOf(const FunctionContext& context, Arguments a) {
  if (const auto* date = std::get_if<Date>(&a[0]))
    return GeneralDateText(*date, context.short_date);
  return ConvertTo(a[0], Type::kText);
}

// Numbers that are not negative get a blank in place of the sign.
Value Str(const FunctionContext&, Arguments a) {
  const double number = std::get<double>(a[0]);
  return (number < 0 ? "" : " ") + NumberText(number);
}

Value Format(const FunctionContext& context, Arguments a) {
  const auto choice = [&](std::size_t i) {
    return a.size() <= i || IsNull(a[i]) ? std::int64_t{0} : Integer(a[i]);
  };
  return FormatValue(a[0], IsNull(a[1]) ? "" : Text(a[1]), context.short_date,
                     WeekRule(choice(2), choice(3)));
}

Value FormatPlain(const FunctionContext& context, Arguments a) {
  return FormatValue(a[0], "", context.short_date);
}

constexpr auto kFunctions = std::to_array<EngineFunction>({
    {"left", "si", 's', false, Left},
    {"right", "si", 's', false, Right},
    {"mid", "si", 's', false, MidToEnd},
    {"mid", "sii", 's', false, Mid},
    {"len", "s", 'i', false, Len},
    {"ucase", "s", 's', false, Upper},
    {"lcase", "s", 's', false, Lower},
    {"trim", "s", 's', false, Trim},
    {"ltrim", "s", 's', false, LTrim},
    {"rtrim", "s", 's', false, RTrim},
    {"instr", "ss", 'i', false, InStr},
    {"instr", "iss", 'i', false, InStrFrom},
    {"instr", "issi", 'i', false, InStrCompare},
    {"instrrev", "ss", 'i', false, InStrRev},
    {"instrrev", "ssi", 'i', false, InStrRev},
    {"instrrev", "ssii", 'i', false, InStrRev},
    {"replace", "sss", 's', false, Replace},
    {"space", "i", 's', false, Space},
    {"string", "is", 's', false, String},
    {"strreverse", "s", 's', false, Reverse},
    {"asc", "s", 'i', false, Asc},
    {"chr", "i", 's', false, Chr},
    {"strcomp", "ss", 'i', false, StrComp},
    {"strcomp", "ssi", 'i', false, StrComp},
    {"like", "ss", 'b', false, Like},
    {"concat", "ss", 's', true, Concat},
    {"cstr", "?", 's', false, ToTextOf},
    {"str", "d", 's', false, Str},
    {"format", "?", 's', true, FormatPlain},
    {"format", "?s", 's', true, Format},
    {"format", "?si", 's', true, Format},
    {"format", "?sii", 's', true, Format},
});

}  // namespace

std::span<const EngineFunction> TextFunctions() { return kFunctions; }

}  // namespace tenora::query
