#include "platform/locale/locale.h"

#include <unicode/ucurr.h>

#include <QDate>
#include <QLocale>
#include <QString>
#include <QTime>
#include <cstdlib>

#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// "en_NZ.UTF-8@euro" names the locale en_NZ; the C locale and an empty name give none.
QString PlainName(std::string_view name) {
  name = name.substr(0, name.find_first_of(".@"));
  if (name == "C" || name == "POSIX") return {};
  return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

// The locale the environment names for one category, with the precedence of the C library.
QString EnvironmentName(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return PlainName(value);
  }
  return {};
}

// One category of regional settings. The C locale has no currency and no numeric short date; it
// gets the day-first English forms with a dollar sign.
struct Category {
  explicit Category(const QString& name) : locale(name), plain(locale.language() == QLocale::C) {
    if (plain) locale = QLocale(QLocale::English, QLocale::NewZealand);
    locale.setNumberOptions(QLocale::DefaultNumberOptions);
  }

  QLocale locale;
  bool plain;
};

// Regional texts use the digits 0 to 9 in every script: callers compare and parse them.
std::string WithAsciiDigits(const QString& text) {
  QString result;
  result.reserve(text.size());
  for (const QChar c : text) {
    if (c.isDigit()) {
      result += QChar('0' + c.digitValue());
    } else if (c == QChar(0x066B)) {
      result += '.';
    } else if (c == QChar(0x066C)) {
      result += ',';
    } else {
      result += c;
    }
  }
  return result.toStdString();
}

QDate ToQDate(Date date) {
  const CalendarTime parts = date.Calendar();
  return QDate(parts.year, parts.month, parts.day);
}

class RegionalSettings : public Locale {
 public:
  RegionalSettings(const QString& time, const QString& monetary, const QString& numeric)
      : time_(time), monetary_(monetary), numeric_(numeric) {}

  std::string LongDate(Date date) const override {
    return WithAsciiDigits(time_.locale.toString(ToQDate(date), QLocale::LongFormat));
  }

  std::string ShortDate(Date date) const override {
    QString format =
        time_.plain ? QStringLiteral("dd/MM/yyyy") : time_.locale.dateFormat(QLocale::ShortFormat);
    // Years have four digits: a letter must not be ambiguous about the century.
    if (format.count('y') == 2) format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    return WithAsciiDigits(time_.locale.toString(ToQDate(date), format));
  }

  std::string MediumTime(Date time) const override {
    const CalendarTime parts = time.Calendar();
    QString half = parts.hour < 12 ? time_.locale.amText() : time_.locale.pmText();
    if (EqualsNoCase(half.toStdString(), parts.hour < 12 ? "AM" : "PM")) half = half.toUpper();
    const int hour = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    const QString digits = QTime(hour, parts.minute).toString(QStringLiteral("hh:mm"));
    return (digits + ' ' + half).toStdString();
  }

  std::string CurrencyText(double amount) const override {
    const int digits = CurrencyDigits();
    // Rounded on the decimal text, where 2.675 is a tie although its binary value is below one.
    std::string pattern = "0";
    if (digits > 0) pattern.append(".").append(static_cast<std::size_t>(digits), '0');
    const double rounded = LeadingNumber(FormatNumber(amount, pattern));
    return WithAsciiDigits(monetary_.locale.toCurrencyString(rounded, QString(), digits));
  }

  std::string Info(int type) const override {
    if (type == kCurrencyDigitsInfo) return std::to_string(CurrencyDigits());
    if (type == kDecimalSeparatorInfo) return WithAsciiDigits(numeric_.locale.decimalPoint());
    return {};
  }

 private:
  int CurrencyDigits() const {
    const QString code = monetary_.locale.currencySymbol(QLocale::CurrencyIsoCode);
    if (code.size() != 3) return 2;
    const std::u16string name = code.toStdU16String();
    UErrorCode status = U_ZERO_ERROR;
    const int digits = ucurr_getDefaultFractionDigits(name.c_str(), &status);
    return U_SUCCESS(status) ? digits : 2;
  }

  Category time_, monetary_, numeric_;
};

}  // namespace

std::unique_ptr<Locale> MakeLocale(std::string_view name) {
  if (name.empty()) {
    return std::make_unique<RegionalSettings>(
        EnvironmentName("LC_TIME"), EnvironmentName("LC_MONETARY"), EnvironmentName("LC_NUMERIC"));
  }
  const QString plain = PlainName(name);
  return std::make_unique<RegionalSettings>(plain, plain, plain);
}

}  // namespace tenora
