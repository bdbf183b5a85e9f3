// The program's version as the windows show it.
#pragma once

#include <QString>

namespace tenora {

// "Version 1.0": the major number and one further part, without leading zeros.
inline QString VersionCaption() {
  return QStringLiteral("Version %1.%2").arg(TENORA_VERSION_MAJOR).arg(TENORA_VERSION_MINOR);
}

}  // namespace tenora
