// A time as the lists of letters and runs show it.
#pragma once

#include <QDateTime>
#include <QString>

#include "platform/locale/locale.h"
#include "platform/runtime/date.h"

namespace tenora {

// "21/11/2026 09:30 AM", as the locale writes it.
inline QString ShownTime(const Locale& locale, Date time) {
  return QString::fromStdString(locale.ShortDate(time) + " " + locale.MediumTime(time));
}

inline QString ShownTime(const Locale& locale, const QDateTime& time) {
  const QDate day = time.date();
  const QTime hour = time.time();
  return ShownTime(locale, Date::FromCalendar(day.year(), day.month(), day.day(), hour.hour(),
                                              hour.minute(), hour.second()));
}

}  // namespace tenora
