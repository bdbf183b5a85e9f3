#include "merge/forms/value_text.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cmath>
#include <cstdlib>

#include "data/sql_text.h"
#include "merge/amount_in_words.h"
#include "platform/locale/locale.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Where the words of an amount are cut to those of a number.
constexpr const char* kUnitMark = "#";

std::string OneBlankEach(const std::string& text) {
  std::string tidy;
  for (const std::string& word : Split(text, " ")) {
    if (!word.empty()) tidy += (tidy.empty() ? "" : " ") + word;
  }
  return tidy;
}

std::string Sentence(const ValueWords& words) { return OneBlankEach(words.line1 + words.line2); }

std::string NumberInWords(double number) {
  const double size = std::abs(number);
  if (std::trunc(number) != number || !WordsSay(size)) return NumberText(number);
  const std::string words = Sentence(GetValueWords(size, CurrencyWords{kUnitMark, ""}));
  const std::string said(TrimBlanks(words.substr(0, words.find(kUnitMark))));
  return (number < 0 ? "Minus " : "") + said;
}

std::string AmountInWords(Session& session, Currency amount) {
  const double size = amount.Absolute().ToDouble();
  if (!WordsSay(size)) return session.platform.locale.CurrencyText(amount.ToDouble());
  return (amount < Currency() ? "Minus " : "") + Sentence(GetValueWords(session.settings, size));
}

std::string AmountText(Session& session, Currency amount, ValueFormat format) {
  switch (format) {
    case ValueFormat::kWords:
      return AmountInWords(session, amount);
    case ValueFormat::kCurrency:
      return session.platform.locale.CurrencyText(amount.ToDouble());
    case ValueFormat::kWhole:
      return FormatNumber(amount, "##0");
    default:
      return MoneyText(session.platform.locale, amount.ToDouble());
  }
}

std::string NumberInFormat(double number, ValueFormat format) {
  if (format == ValueFormat::kWords) return NumberInWords(number);
  return format == ValueFormat::kWhole ? FormatNumber(number, "##0") : NumberText(number);
}

std::string DayText(const Locale& locale, Date day, ValueFormat format) {
  switch (format) {
    case ValueFormat::kShort:
      return locale.ShortDate(day);
    case ValueFormat::kMonth:
      return FormatDate(day, "mmmm yyyy");
    case ValueFormat::kWeekday:
      return FormatDate(day, "dddd");
    default:
      return locale.LongDate(day);
  }
}

std::string InLetters(const std::string& text, ValueFormat format) {
  icu::UnicodeString letters = icu::UnicodeString::fromUTF8(text);
  const icu::Locale& anywhere = icu::Locale::getRoot();
  if (format == ValueFormat::kCapitals) letters.toUpper(anywhere);
  if (format == ValueFormat::kSmallLetters) letters.toLower(anywhere);
  if (format == ValueFormat::kTitle) letters.toTitle(nullptr, anywhere);
  std::string result;
  return letters.toUTF8String(result);
}

}  // namespace

std::string ValueText(Session& session, const Fact& fact, ValueFormat format) {
  if (const auto* text = std::get_if<std::string>(&fact)) return InLetters(*text, format);
  if (const auto* number = std::get_if<double>(&fact)) return NumberInFormat(*number, format);
  if (const auto* amount = std::get_if<Currency>(&fact)) {
    return AmountText(session, *amount, format);
  }
  if (const auto* day = std::get_if<Date>(&fact)) {
    return DayText(session.platform.locale, *day, format);
  }
  if (const auto* yes = std::get_if<bool>(&fact)) return *yes ? "Yes" : "No";
  return "";
}

}  // namespace tenora
