#include "data/sql_text.h"

#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

bool StartsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

// The last characters of a text, as many of `count` as it has.
std::string_view LastCharacters(std::string_view text, int count) {
  std::size_t start = text.size();
  while (start > 0 && count > 0) {
    --start;
    if (StartsCharacter(text[start])) --count;
  }
  return text.substr(start);
}

// Where the character after the first `count` ones starts; npos when there is none.
std::size_t EndOfCharacters(std::string_view text, int count) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!StartsCharacter(text[i])) continue;
    if (count == 0) return i;
    --count;
  }
  return std::string_view::npos;
}

// An apostrophe after a comparison opens a literal. "ke" is the end of the word like.
bool OpensLiteral(std::string_view before) {
  const std::string_view window = LastCharacters(before, 3);
  return window.find_first_of("=<>") != std::string_view::npos || ContainsNoCase(window, "ke");
}

// An apostrophe in front of " and", " or" or " order" closes one. The test needs a fifth character
// after the four it looks at.
bool ClosesLiteral(std::string_view after) {
  const std::size_t end = EndOfCharacters(after, 4);
  if (end == std::string_view::npos) return false;
  const std::string_view window = after.substr(0, end);
  for (const std::string_view word : {" and", "  an", " or ", " ord"}) {
    if (EqualsNoCase(window, word)) return true;
  }
  return false;
}

std::string DoubleStrayApostrophes(std::string_view rest) {
  std::string done;
  done.reserve(rest.size() + 8);
  for (std::size_t found = rest.find('\''); found != std::string_view::npos;
       found = rest.find('\'')) {
    done.append(rest.substr(0, found));
    rest.remove_prefix(found + 1);
    const bool keep = OpensLiteral(done) || ClosesLiteral(rest) || rest.empty();
    done += keep ? "'" : "''";
  }
  return done.append(rest);
}

}  // namespace

std::string FixSQL(std::string_view sql) {
  // Deliberately blunt: lower case only, and everywhere, inside literals and names too. Statements
  // are written with it in mind.
  std::string fixed = ReplaceAll(ReplaceAll(std::string(sql), "false", "0"), "true", "-1");
  std::size_t apostrophes = 0;
  for (const char c : fixed) apostrophes += c == '\'' ? 1 : 0;
  return apostrophes % 2 == 0 ? fixed : DoubleStrayApostrophes(fixed);
}

std::string SQLText(std::string_view value) {
  return std::string("'").append(ReplaceAll(std::string(value), "'", "''")).append("'");
}

std::string SQLDate(Date date) {
  return std::string("#").append(FormatDate(date, "mm/dd/yyyy")).append("#");
}

std::string SQLDateTime(Date date) {
  return std::string("#").append(FormatDate(date, "hh:mm:ss MM/DD/YYYY")).append("#");
}

std::string LocaleText(const Locale& locale, int type, std::string_view default_text) {
  const std::string text = locale.Info(type);
  return text.empty() ? std::string(default_text) : text;
}

std::string NumberFormat(const Locale& locale) {
  constexpr std::string_view kZeros = "00000000000000";
  std::int16_t digits = ToInt16(LocaleText(locale, kCurrencyDigitsInfo, "2"));
  if (digits < 0) throw StandardError(error_number::kInvalidProcedureCall);
  // Deliberate: a locale set to no decimals still gets two.
  if (digits == 0) digits = 2;
  return std::string("###0.").append(kZeros.substr(0, static_cast<std::size_t>(digits)));
}

std::string MoneyText(const Locale& locale, double amount) {
  return FormatNumber(amount, NumberFormat(locale), LocaleText(locale, kDecimalSeparatorInfo, "."));
}

}  // namespace tenora
