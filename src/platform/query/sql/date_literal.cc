#include "platform/query/sql/date_literal.h"

#include <array>
#include <charconv>
#include <vector>

#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

struct Part {
  int number = -1;  // -1 for a word
  std::size_t digits = 0;
  std::string_view word;
  char separator = ' ';  // the one after the part
};

constexpr std::size_t kMostParts = 8;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsSeparator(char c) {
  return c == '/' || c == '-' || c == ':' || c == '.' || c == ',' || c == ' ';
}

// False when the text holds anything but numbers, words and single separators.
bool SplitParts(std::string_view text, std::vector<Part>& parts) {
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t start = i;
    Part part;
    if (IsDigit(text[i])) {
      while (i < text.size() && IsDigit(text[i])) ++i;
      part.digits = i - start;
      if (part.digits > 4) return false;
      std::from_chars(text.data() + start, text.data() + i, part.number);
    } else if (IsLetter(text[i])) {
      while (i < text.size() && IsLetter(text[i])) ++i;
      part.word = text.substr(start, i - start);
    } else {
      return false;
    }
    while (i < text.size() && IsSeparator(text[i])) {
      if (text[i] != ' ') {
        if (part.separator != ' ') return false;
        part.separator = text[i];
      }
      ++i;
    }
    parts.push_back(part);
    if (parts.size() > kMostParts) return false;
  }
  return !parts.empty() && parts.back().separator == ' ';
}

int MonthOfName(std::string_view word) {
  constexpr std::array<std::string_view, 12> kMonths = {
      "january", "february", "march",     "april",   "may",      "june",
      "july",    "august",   "september", "october", "november", "december"};
  if (word.size() < 3) return 0;
  for (std::size_t i = 0; i < kMonths.size(); ++i)
    if (StartsWithNoCase(kMonths[i], word)) return static_cast<int>(i + 1);
  return 0;
}

int FullYear(const Part& part) {
  if (part.digits > 2) return part.number;
  return part.number + (part.number < 30 ? 2000 : 1900);
}

struct Reader {
  const std::vector<Part>& parts;
  std::size_t next = 0;
  CalendarTime result = {};
  bool has_date = false;
  bool has_time = false;

  bool ReadAll() {
    while (next < parts.size()) {
      const bool time = parts[next].separator == ':' || FollowedByHalfDay();
      if (time ? has_time || !ReadTime() : has_date || !ReadDay()) return false;
    }
    return true;
  }

  static bool IsHalfDay(const Part& part) {
    return EqualsNoCase(part.word, "am") || EqualsNoCase(part.word, "pm");
  }
  bool FollowedByHalfDay() const {
    return next + 1 < parts.size() && parts[next].number >= 0 && IsHalfDay(parts[next + 1]);
  }

  bool ReadTime() {
    has_time = true;
    int* const fields[] = {&result.hour, &result.minute, &result.second};
    for (int* field : fields) {
      if (next == parts.size() || parts[next].number < 0) return false;
      const Part& part = parts[next++];
      *field = part.number;
      if (part.separator != ':') break;
    }
    if (parts[next - 1].separator == ':') return false;
    if (next < parts.size() && IsHalfDay(parts[next])) {
      if (result.hour < 1 || result.hour > 12) return false;
      result.hour = result.hour % 12 + (EqualsNoCase(parts[next].word, "pm") ? 12 : 0);
      ++next;
    }
    return result.hour < 24 && result.minute < 60 && result.second < 60;
  }

  bool ReadDay() {
    has_date = true;
    if (parts.size() - next < 3) return false;
    const Part &a = parts[next], &b = parts[next + 1], &c = parts[next + 2];
    next += 3;
    if (a.word.empty() && b.word.empty() && c.word.empty()) return SetNumbers(a, b, c);
    if (a.word.empty() && c.word.empty()) return Set(FullYear(c), MonthOfName(b.word), a.number);
    if (b.word.empty() && c.word.empty()) return Set(FullYear(c), MonthOfName(a.word), b.number);
    return false;
  }

  bool SetNumbers(const Part& a, const Part& b, const Part& c) {
    if (a.separator != b.separator) return false;
    if (a.digits > 2) return Set(a.number, b.number, c.number);
    const bool day_first = a.number > 12 && b.number <= 12;
    return day_first ? Set(FullYear(c), b.number, a.number) : Set(FullYear(c), a.number, b.number);
  }

  bool Set(int year, int month, int day) {
    result.year = year;
    result.month = month;
    result.day = day;
    return IsCalendarDay(year, month, day);
  }
};

}  // namespace

std::optional<Date> ReadDateLiteral(std::string_view text) {
  std::vector<Part> parts;
  if (!SplitParts(TrimBlanks(text), parts)) return std::nullopt;
  Reader reader{.parts = parts};
  if (!reader.ReadAll()) return std::nullopt;
  return Date::FromCalendar(reader.result);
}

}  // namespace tenora::query
