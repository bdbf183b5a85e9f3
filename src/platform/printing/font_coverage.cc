#include "platform/printing/font_coverage.h"

#include <unicode/uchar.h>

#include <QFont>
#include <QFontMetrics>

#include "platform/printing/qt_application.h"

namespace tenora::printing {
namespace {

// The fonts that the program is installed with have these: nothing is loaded for most letters.
constexpr bool IsInEveryFont(char32_t c) { return c < 0x370 || (c >= 0x2000 && c < 0x20D0); }

bool IsToBeSeen(char32_t character) {
  const auto c = static_cast<UChar32>(character);
  const int type = u_charType(c);
  return type != U_PRIVATE_USE_CHAR && type != U_FORMAT_CHAR && type != U_CONTROL_CHAR &&
         !u_isUWhiteSpace(c) && !u_hasBinaryProperty(c, UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
}

}  // namespace

bool FontCoverage::Shows(char32_t character) {
  if (IsInEveryFont(character)) return true;
  const auto known = known_.find(character);
  if (known != known_.end()) return known->second;
  return known_[character] = LookUp(character);
}

bool FontCoverage::LookUp(char32_t character) {
  if (!IsToBeSeen(character)) return true;
  if (!application_) application_ = HoldQtApplication();
  // Qt goes on to every other font where this one lacks a character, as it does in drawing.
  return QFontMetrics(QFont(QStringLiteral("Liberation Sans"))).inFontUcs4(character);
}

}  // namespace tenora::printing
