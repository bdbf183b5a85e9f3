// The dates by which the rental data says "none".
#pragma once

#include "platform/runtime/date.h"

namespace tenora {

// Of the package's own placeholder, 1 January 1234.
inline constexpr int kNoDateYear = 1234;
// Of the empty date, and of the day after it.
inline constexpr int kEmptyYear = 1899;

inline bool DateMeansNone(Date date) {
  const int year = date.Year();
  return year == kEmptyYear || year == kNoDateYear;
}

}  // namespace tenora
