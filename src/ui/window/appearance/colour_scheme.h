// The colour schemes: three colours each, turned into a palette in which all text is readable, on
// light and on dark desktops.
#pragma once

#include <QColor>
#include <QPalette>
#include <array>
#include <string>
#include <string_view>

#include "data/settings.h"

namespace tenora {

inline constexpr std::array<const char*, 6> kColourSchemes{"Blue",  "Gold", "Silver",
                                                           "Green", "Grey", "Custom"};

struct SchemeColours {
  QColor light, mid, dark;

  bool operator==(const SchemeColours&) const = default;
};

// The ratio of relative luminances, from 1 (the same) to 21 (black on white).
double Contrast(const QColor& one, const QColor& other);

// The minimum contrast of readable text.
inline constexpr double kReadable = 4.5;

// The three colours of a named scheme; those of "Blue" for an unknown name. For "Custom", the
// colours that the user's choice starts from.
SchemeColours ColoursOf(std::string_view scheme);

// On a dark desktop the light colour gives way to a shade of the dark one.
QPalette MakePalette(const SchemeColours& colours, bool dark_desktop);

// The stored scheme; "Blue" for none.
std::string StoredScheme(Settings& settings);
SchemeColours StoredColours(Settings& settings);  // of the stored scheme
SchemeColours StoredCustomColours(Settings& settings);
void StoreScheme(Settings& settings, std::string_view scheme);
void StoreCustomColours(Settings& settings, const SchemeColours& colours);

}  // namespace tenora
