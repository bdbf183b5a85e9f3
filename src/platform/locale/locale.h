// The regional settings: named date and currency formats, decimal digits and separator.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/runtime/date.h"

namespace tenora {

class Locale {
 public:
  virtual ~Locale() = default;
  virtual std::string LongDate(Date date) const = 0;          // "long date"
  virtual std::string ShortDate(Date date) const = 0;         // "short date"
  virtual std::string MediumTime(Date time) const = 0;        // "medium time": 02:30 PM
  virtual std::string CurrencyText(double amount) const = 0;  // "currency": $1,234.50
  // Locale information by its system number, as text; empty when the system gives none. 25 (0x19)
  // is the number of fractional currency digits, 14 (0x0E) the decimal separator.
  virtual std::string Info(int type) const = 0;
};

inline constexpr int kDecimalSeparatorInfo = 0x0E;
inline constexpr int kCurrencyDigitsInfo = 0x19;

// By name ("en_NZ", "de_DE"); an empty name means the system's (LC_ALL, LC_TIME, LANG). Needs no
// QApplication.
std::unique_ptr<Locale> MakeLocale(std::string_view name = {});

}  // namespace tenora
