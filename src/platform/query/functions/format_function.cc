#include "platform/query/functions/format_function.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "platform/query/values/decimal.h"
#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using Named = std::pair<std::string_view, std::string_view>;

constexpr std::array<Named, 6> kDateFormats = {{{"long date", "dddd, d mmmm yyyy"},
                                                {"medium date", "dd-mmm-yy"},
                                                {"short date", "dd/mm/yyyy"},
                                                {"long time", "h:nn:ss AM/PM"},
                                                {"medium time", "hh:nn AM/PM"},
                                                {"short time", "hh:nn"}}};
constexpr std::array<Named, 5> kNumberFormats = {{{"fixed", "0.00"},
                                                  {"standard", "#,##0.00"},
                                                  {"currency", "$#,##0.00;-$#,##0.00"},
                                                  {"percent", "0.00%"},
                                                  {"scientific", "0.00E+00"}}};
constexpr std::string_view kGeneralNumber = "general number";
constexpr std::array<Named, 3> kBooleanFormats = {
    {{"yes/no", "Yes/No"}, {"true/false", "True/False"}, {"on/off", "On/Off"}}};

template <std::size_t kCount>
std::optional<std::string_view> FindNamed(const std::array<Named, kCount>& formats,
                                          std::string_view name) {
  for (const Named& format : formats)
    if (EqualsNoCase(format.first, name)) return format.second;
  return std::nullopt;
}

// The length of a literal at the start of `rest`, a text in quotes or a character behind a
// backslash, added to `text` without its mark; 0 if there is none.
std::size_t ReadLiteral(std::string_view rest, std::string& text) {
  if (rest.starts_with('\\') && rest.size() > 1) {
    text += rest[1];
    return 2;
  }
  if (!rest.starts_with('"')) return 0;
  const std::size_t end = std::min(rest.find('"', 1), rest.size());
  text += rest.substr(1, end - 1);
  return std::min(end + 1, rest.size());
}

// The pattern without its literals.
std::string WithoutLiterals(std::string_view pattern) {
  std::string bare, literal;
  while (!pattern.empty()) {
    const std::size_t size = ReadLiteral(pattern, literal);
    if (size == 0) bare += pattern.front();
    pattern.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return bare;
}

class DateFormatter {
 public:
  DateFormatter(Date date, const DateText& short_date, const WeekRule& weeks)
      : date_(date), parts_(date.Calendar()), short_date_(short_date), weeks_(weeks) {}

  std::string Format(std::string_view pattern) {
    if (EqualsNoCase(pattern, "general date")) return GeneralDateText(date_, short_date_);
    if (EqualsNoCase(pattern, "short date")) return short_date_(date_);
    pattern = FindNamed(kDateFormats, pattern).value_or(pattern);
    const std::string bare = WithoutLiterals(pattern);
    const bool half_day = std::ranges::any_of(
        kHalfDays, [&](std::string_view mark) { return FindNoCase(bare, mark) != bare.npos; });
    CalendarTime clock = parts_;
    if (half_day) clock.hour = clock.hour % 12 == 0 ? 12 : clock.hour % 12;
    clock_ = Date::FromCalendar(clock);
    while (!pattern.empty()) pattern.remove_prefix(TakePiece(pattern));
    return std::move(text_);
  }

 private:
  static constexpr std::array<std::string_view, 3> kHalfDays = {"am/pm", "a/p", "ampm"};

  // Formats the first piece of the pattern and returns its length.
  std::size_t TakePiece(std::string_view pattern) {
    if (const std::size_t size = ReadLiteral(pattern, text_); size > 0) return size;
    for (const std::string_view mark : kHalfDays) {
      if (!StartsWithNoCase(pattern, mark)) continue;
      AddHalfDay(pattern.substr(0, mark.size()));
      return mark.size();
    }
    const char letter = LowerAscii(pattern.front());
    std::size_t count = 1;
    while (count < pattern.size() && LowerAscii(pattern[count]) == letter) ++count;
    AddRun(letter, pattern.substr(0, count));
    // "m" behind an hour means minutes, across a separator.
    if (letter != ':' && letter != '.') behind_hour_ = letter == 'h';
    return count;
  }

  void AddHalfDay(std::string_view mark) {
    std::string half = parts_.hour < 12 ? "AM" : "PM";
    if (mark.size() == 3) half.resize(1);
    text_ += mark.front() == 'a' ? ToLower(half) : half;
  }

  void AddRun(char letter, std::string_view run) {
    const std::size_t count = run.size();
    if (letter == 'd' && count >= 5) {
      text_ += count == 5 ? short_date_(date_) : FormatDate(date_, *FindNamed(kDateFormats, kLong));
    } else if (letter == 'c' && count == 1) {
      text_ += GeneralDateText(date_, short_date_);
    } else if (letter == 't' && count == 5) {
      text_ += DateFormatter(date_, short_date_, weeks_).Format("long time");
    } else if (letter == 'q') {
      text_ += std::to_string((parts_.month - 1) / 3 + 1);
    } else if (letter == 'w') {
      text_ += std::to_string(count == 1 ? weeks_.Weekday(date_) : weeks_.WeekOfYear(date_));
    } else if (letter == 'y' && count == 1) {
      text_ += std::to_string(DaysBetween(Date::FromCalendar(parts_.year, 1, 1), date_) + 1);
    } else if (letter == 'm' && behind_hour_) {
      text_ += FormatDate(clock_, count == 1 ? "n" : "nn");
    } else {
      text_ += FormatDate(clock_, run);
    }
  }

  static constexpr std::string_view kLong = "long date";

  Date date_, clock_;  // clock_: with the hour that "h" shows
  CalendarTime parts_;
  const DateText& short_date_;
  const WeekRule& weeks_;
  bool behind_hour_ = false;
  std::string text_;
};

// One section of a number's pattern, taken apart.
class NumberSection {
 public:
  explicit NumberSection(std::string_view pattern) {
    while (!pattern.empty()) pattern.remove_prefix(ReadPiece(pattern));
    // Commas behind the last digit before the point divide by a thousand each.
    thousands_ += pending_commas_;
  }

  // The number without its sign; `zero` tells whether all its digits are.
  std::string Format(const Value& magnitude, bool& zero) const {
    if (digits_[0].empty() && digits_[1].empty()) return Literals();
    int exponent = 0;
    std::string number = Rounded(magnitude, exponent);
    zero = number.find_first_not_of("0.") == std::string::npos;
    const std::size_t point = std::min(number.find('.'), number.size());
    std::string whole = number.substr(0, point);
    whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
    const std::size_t first_zero = digits_[0].find('0');
    if (first_zero != std::string::npos && whole.size() < digits_[0].size() - first_zero)
      whole.insert(0, digits_[0].size() - first_zero - whole.size(), '0');
    return Place(whole, number.substr(std::min(point + 1, number.size())), exponent);
  }

 private:
  enum class Kind : std::uint8_t { kLiteral, kWhole, kPoint, kDecimal, kExponent };
  struct Piece {
    Kind kind;
    std::string text;  // of a literal, and the "E" with a "+" of an exponent
    std::size_t zeros = 0;
  };

  std::size_t ReadPiece(std::string_view rest) {
    std::string literal;
    if (const std::size_t size = ReadLiteral(rest, literal); size > 0) {
      pieces_.push_back({Kind::kLiteral, literal});
      return size;
    }
    const char c = rest.front();
    if (c == '#' || c == '0') {
      if (pending_commas_ > 0) grouped_ = true;
      pending_commas_ = 0;
      digits_[behind_point_ ? 1 : 0] += c;
      pieces_.push_back({behind_point_ ? Kind::kDecimal : Kind::kWhole, {}});
      return 1;
    }
    if (c == ',' && !behind_point_ && !digits_[0].empty()) {
      ++pending_commas_;
      return 1;
    }
    if (c == '.' && !behind_point_) {
      thousands_ += std::exchange(pending_commas_, 0);
      behind_point_ = true;
      pieces_.push_back({Kind::kPoint, {}});
      return 1;
    }
    if ((c == 'E' || c == 'e') && rest.size() > 2 && (rest[1] == '+' || rest[1] == '-')) {
      const std::size_t end = std::min(rest.find_first_not_of('0', 2), rest.size());
      if (end > 2) {
        scientific_ = true;
        pieces_.push_back({Kind::kExponent, std::string(rest.substr(0, 2)), end - 2});
        return end;
      }
    }
    if (c == '%') ++percents_;
    pieces_.push_back({Kind::kLiteral, std::string(1, c)});
    return 1;
  }

  std::string Literals() const {
    std::string text;
    for (const Piece& piece : pieces_) text += piece.text;
    return text;
  }

  // The digits with as many decimals as the pattern has.
  std::string Rounded(const Value& magnitude, int& exponent) const {
    const std::string pattern =
        digits_[1].empty() ? "0" : "0." + std::string(digits_[1].size(), '0');
    const bool scaled = percents_ > 0 || thousands_ > 0;
    if (std::holds_alternative<std::string>(magnitude) && !scientific_)
      return RoundedExactly(Decimal::Of(magnitude));
    if (const auto* money = std::get_if<Currency>(&magnitude);
        money != nullptr && !scaled && !scientific_)
      return FormatNumber(*money, pattern);
    double number = ToDouble(magnitude) * std::pow(100.0, percents_) / std::pow(1000.0, thousands_);
    if (!scientific_ || number == 0) return FormatNumber(number, pattern);
    const int digits = static_cast<int>(std::max<std::size_t>(digits_[0].size(), 1));
    exponent = static_cast<int>(std::floor(std::log10(number))) - (digits - 1);
    std::string text = FormatNumber(number / std::pow(10.0, exponent), pattern);
    // 9.999 was rounded to 10.00.
    if (std::min(text.find('.'), text.size()) > static_cast<std::size_t>(digits))
      text = FormatNumber(number / std::pow(10.0, ++exponent), pattern);
    return text;
  }

  std::string RoundedExactly(Decimal number) const {
    for (int i = 0; i < percents_; ++i) number = number * Decimal::Of(std::int64_t{100});
    for (int i = 0; i < thousands_; ++i) number = number / Decimal::Of(std::int64_t{1000});
    const std::size_t decimals = digits_[1].size();
    const auto kept = static_cast<int>(std::min<std::size_t>(decimals, Decimal::kMostDecimals));
    std::string text = number.Rounded(kept, Decimal::Rounding::kHalfAway).Text();
    if (decimals == 0) return text;
    if (text.find('.') == std::string::npos) text += '.';
    return text.append(decimals - (text.size() - 1 - text.find('.')), '0');
  }

  std::string Place(const std::string& whole, const std::string& decimals, int exponent) const {
    // Zeros at the end are shown where the pattern has a "0".
    std::size_t shown = decimals.find_last_not_of('0') + 1;
    shown = std::max(shown, digits_[1].find_last_of('0') + 1);
    std::string text;
    std::size_t left = digits_[0].size(), at = 0;  // places before the point; decimals
    for (const Piece& piece : pieces_) {
      switch (piece.kind) {
        case Kind::kLiteral:
          text += piece.text;
          break;
        case Kind::kWhole: {
          // The first place takes all digits that the others have no room for.
          const std::size_t from = left == digits_[0].size() ? std::max(whole.size(), left) : left;
          AddDigits(whole, from, --left, text);
          break;
        }
        case Kind::kPoint:
          if (digits_[0].empty()) text += whole;
          text += '.';
          break;
        case Kind::kDecimal:
          if (at < shown) text += decimals[at];
          ++at;
          break;
        case Kind::kExponent: {
          text += piece.text.front();
          if (exponent < 0 || piece.text.back() == '+') text += exponent < 0 ? '-' : '+';
          const std::string power = std::to_string(std::abs(exponent));
          text.append(piece.zeros - std::min(piece.zeros, power.size()), '0').append(power);
          break;
        }
      }
    }
    return text;
  }

  // The digits from that many before the point to that many, as far as there are any.
  void AddDigits(const std::string& whole, std::size_t from, std::size_t to,
                 std::string& text) const {
    for (std::size_t place = from; place > to; --place) {
      if (place > whole.size()) continue;
      text += whole[whole.size() - place];
      if (grouped_ && place > 1 && place % 3 == 1) text += ',';
    }
  }

  std::vector<Piece> pieces_;
  std::array<std::string, 2> digits_;  // the places before and behind the point
  int percents_ = 0, thousands_ = 0, pending_commas_ = 0;
  bool grouped_ = false, behind_point_ = false, scientific_ = false;
};

// The sections of a pattern: for numbers above and below zero, for zero and for null.
std::vector<std::string_view> Sections(std::string_view pattern) {
  std::vector<std::string_view> sections;
  std::string literal;
  std::size_t start = 0;
  for (std::size_t at = 0; at < pattern.size();) {
    const std::size_t size = ReadLiteral(pattern.substr(at), literal);
    if (size == 0 && pattern[at] == ';') {
      sections.push_back(pattern.substr(start, at - start));
      start = at + 1;
    }
    at += std::max<std::size_t>(size, 1);
  }
  sections.push_back(pattern.substr(start));
  return sections;
}

Value Magnitude(const Value& value) {
  if (const auto* money = std::get_if<Currency>(&value))
    return *money < Currency() ? -*money : *money;
  if (const auto* text = std::get_if<std::string>(&value))
    return Decimal::Of(*text).Absolute().Text();
  return std::abs(ToDouble(value));
}

std::string FormatNumberValue(const Value& value, std::string_view pattern) {
  if (EqualsNoCase(pattern, kGeneralNumber)) return TextOf(value);
  const double number = ToDouble(value);
  if (const auto words = FindNamed(kBooleanFormats, pattern)) {
    const std::size_t slash = words->find('/');
    return std::string(number != 0 ? words->substr(0, slash) : words->substr(slash + 1));
  }
  const std::vector<std::string_view> sections =
      Sections(FindNamed(kNumberFormats, pattern).value_or(pattern));
  std::size_t section = number < 0 ? 1 : number == 0 ? 2 : 0;
  // An empty section, like a missing one, is that of the numbers above zero.
  if (section >= sections.size() || sections[section].empty()) section = 0;
  bool zero = false;
  const std::string text = NumberSection(sections[section]).Format(Magnitude(value), zero);
  return (number < 0 && section == 0 && !zero ? "-" : "") + text;
}

// Whether a pattern is the name of a format of numbers.
bool IsNumberName(std::string_view pattern) {
  return EqualsNoCase(pattern, kGeneralNumber) || FindNamed(kNumberFormats, pattern) ||
         FindNamed(kBooleanFormats, pattern);
}

// Whether a pattern formats dates, for values that are texts or numbers.
bool IsDatePattern(std::string_view pattern) {
  if (FindNamed(kDateFormats, pattern) || EqualsNoCase(pattern, "general date")) return true;
  if (IsNumberName(pattern)) return false;
  if (EqualsNoCase(pattern, "c") || EqualsNoCase(pattern, "ttttt")) return true;
  const std::string bare = WithoutLiterals(pattern);
  return bare.find_first_of("dmyhnsqwDMYHNSQW") != std::string::npos &&
         bare.find_first_of("#0;") == std::string::npos;
}

// Whether a pattern formats texts, and numbers and dates as their texts.
bool IsTextPattern(std::string_view pattern) {
  const std::string bare = WithoutLiterals(pattern);
  if (bare.find_first_of("#0") != std::string::npos) return false;
  if (bare.find('@') != std::string::npos) return true;
  const bool marked = bare.find('&') != std::string::npos || bare.starts_with('<') ||
                      bare.starts_with('>') || bare.starts_with('!');
  return marked && !IsDatePattern(pattern);
}

// A text in one section of a pattern of texts.
class TextSection {
 public:
  explicit TextSection(std::string_view pattern) {
    while (!pattern.empty()) pattern.remove_prefix(ReadPiece(pattern));
  }

  std::string Format(std::string_view text) const {
    std::vector<std::string> characters;
    while (!text.empty()) AppendUtf8(characters.emplace_back(), TakeCodePoint(text));
    const std::size_t places = static_cast<std::size_t>(std::ranges::count_if(
        pieces_, [](const Piece& piece) { return piece.kind != Kind::kLiteral; }));
    const std::size_t missing = places - std::min(places, characters.size());
    const std::size_t more = characters.size() - (places - missing);
    std::string result;
    std::size_t place = 0, at = 0;
    for (const Piece& piece : pieces_) {
      if (piece.kind == Kind::kLiteral) {
        result += piece.text;
        continue;
      }
      const bool empty = from_left_ ? place + missing >= places : place < missing;
      // The place that is filled last takes what the others have no room for.
      std::size_t taken = empty ? 0 : 1;
      if (place == (from_left_ ? places - 1 : 0)) taken += more;
      for (std::size_t i = 0; i < taken; ++i) result += Cased(characters[at++]);
      if (empty && piece.kind == Kind::kBlank) result += ' ';
      ++place;
    }
    return result;
  }

 private:
  enum class Kind : std::uint8_t { kLiteral, kBlank, kNothing };  // for an empty place
  struct Piece {
    Kind kind;
    std::string text = {};
  };

  std::size_t ReadPiece(std::string_view rest) {
    std::string literal;
    if (const std::size_t size = ReadLiteral(rest, literal); size > 0) {
      pieces_.push_back({Kind::kLiteral, literal});
      return size;
    }
    const char c = rest.front();
    if (c == '@' || c == '&') {
      pieces_.push_back({c == '@' ? Kind::kBlank : Kind::kNothing});
    } else if (c == '!') {
      from_left_ = true;
    } else if (c == '<' || c == '>') {
      case_ = c;
    } else {
      pieces_.push_back({Kind::kLiteral, std::string(1, c)});
    }
    return 1;
  }

  std::string Cased(const std::string& text) const {
    if (case_ == 0) return text;
    icu::UnicodeString units = icu::UnicodeString::fromUTF8(text);
    std::string cased;
    (case_ == '>' ? units.toUpper(icu::Locale::getRoot()) : units.toLower(icu::Locale::getRoot()))
        .toUTF8String(cased);
    return cased;
  }

  std::vector<Piece> pieces_;
  char case_ = 0;
  bool from_left_ = false;
};

std::string FormatByPlaces(const std::string& text, std::string_view pattern) {
  const std::vector<std::string_view> sections = Sections(pattern);
  if (text.empty() && sections.size() > 1) return TextSection(sections[1]).Format(text);
  std::string section(sections[0]);
  // Without places, the text as a whole.
  if (WithoutLiterals(section).find_first_of("@&") == std::string::npos) section += '&';
  return TextSection(section).Format(text);
}

std::string FormatText(const std::string& text, std::string_view pattern,
                       const DateText& short_date, const WeekRule& weeks) {
  try {
    if (IsDatePattern(pattern))
      return DateFormatter(ToDate(text), short_date, weeks).Format(pattern);
    // The text of a decimal keeps its digits.
    const std::optional<Decimal> number = Decimal::Parse(text);
    return FormatNumberValue(number ? number->ToValue() : ToDouble(text), pattern);
  } catch (const RuntimeError&) {
    return text;  // neither number nor date: unchanged
  }
}

std::string FormatNull(std::string_view pattern) {
  const std::vector<std::string_view> sections = Sections(pattern);
  if (IsTextPattern(pattern)) return sections.size() < 2 ? "" : FormatByPlaces({}, pattern);
  bool zero = false;
  return sections.size() < 4 ? std::string() : NumberSection(sections[3]).Format(0.0, zero);
}

}  // namespace

std::string GeneralDateText(Date date, const DateText& short_date) {
  const bool midnight = date.SecondOfDay() == 0;
  const std::string time = midnight ? "" : FormatDate(date, "hh:nn:ss");
  if (!midnight && date.DayNumber() == 0) return time;
  return short_date(date) + (midnight ? "" : " ") + time;
}

std::string FormatValue(const Value& value, std::string_view pattern, const DateText& short_date,
                        const WeekRule& weeks) {
  if (IsNull(value)) return FormatNull(pattern);
  if (TypeOf(value) == Type::kBinary) throw StandardError(error_number::kTypeMismatch);
  const auto* const date = std::get_if<Date>(&value);
  if (IsTextPattern(pattern))
    return FormatByPlaces(date == nullptr ? TextOf(value) : GeneralDateText(*date, short_date),
                          pattern);
  if (date != nullptr && IsNumberName(pattern)) return FormatNumberValue(date->serial(), pattern);
  if (date != nullptr)
    return DateFormatter(*date, short_date, weeks)
        .Format(pattern.empty() ? "general date" : pattern);
  if (pattern.empty()) return TextOf(value);
  if (const auto* const text = std::get_if<std::string>(&value))
    return FormatText(*text, pattern, short_date, weeks);
  if (!IsDatePattern(pattern)) return FormatNumberValue(value, pattern);
  return DateFormatter(ToDate(value), short_date, weeks).Format(pattern);
}

}  // namespace tenora::query
