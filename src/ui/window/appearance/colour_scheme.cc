#include "ui/window/appearance/colour_scheme.h"

#include <algorithm>
#include <cmath>

#include "platform/runtime/conversion.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Colours";

double Linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
  return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
         0.0722 * Linear(colour.blueF());
}

QColor Mix(const QColor& one, const QColor& other, double share) {
  const auto mixed = [share](float a, float b) {
    return static_cast<float>(a * (1 - share) + b * share);
  };
  return QColor::fromRgbF(mixed(one.redF(), other.redF()), mixed(one.greenF(), other.greenF()),
                          mixed(one.blueF(), other.blueF()));
}

// The colour itself if it is readable on all backgrounds, else moved as far as necessary towards
// whichever of black and white has more contrast.
QColor ReadableOn(const QColor& meant, std::initializer_list<QColor> grounds, double least) {
  const auto worst = [&](const QColor& colour) {
    double result = 21;
    for (const QColor& ground : grounds) result = std::min(result, Contrast(colour, ground));
    return result;
  };
  const QColor end = worst(Qt::black) > worst(Qt::white) ? QColor(Qt::black) : QColor(Qt::white);
  for (int step = 0; step < 20; ++step) {
    // Rounded to 8 bits a channel, as it will be displayed.
    const QColor colour = QColor(Mix(meant, end, step / 20.0).rgb());
    if (worst(colour) >= least) return colour;
  }
  return end;
}

// A background moved towards black or white until text is readable on it.
QColor Ground(const QColor& meant, const QColor& end) {
  for (int step = 0; step < 20; ++step) {
    const QColor ground = QColor(Mix(meant, end, step / 20.0).rgb());
    if (Contrast(ground, end == QColor(Qt::white) ? Qt::black : Qt::white) >= 12) return ground;
  }
  return end;
}

std::string NumberOf(const QColor& colour) {
  return std::to_string(static_cast<std::int32_t>(colour.rgb() & 0xFFFFFFU));
}

QColor StoredColour(Settings& settings, const char* key, const QColor& fallback) {
  const std::string number = settings.GetSettingText(kSection, key, NumberOf(fallback));
  return QColor(QRgb(ToInt32(number)) | 0xFF000000U);
}

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
  const double a = Luminance(one), b = Luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

SchemeColours ColoursOf(std::string_view scheme) {
  if (scheme == "Gold")
    return {QColor(0xFB, 0xF4, 0xE2), QColor(0xB5, 0x83, 0x1F), {0x5A, 0x40, 0x0B}};
  if (scheme == "Silver")
    return {QColor(0xF2, 0xF4, 0xF7), QColor(0x7A, 0x86, 0x99), {0x3A, 0x43, 0x52}};
  if (scheme == "Green")
    return {QColor(0xEE, 0xF6, 0xEF), QColor(0x2E, 0x7D, 0x4F), {0x17, 0x45, 0x2B}};
  if (scheme == "Grey")
    return {QColor(0xF1, 0xF1, 0xF1), QColor(0x6B, 0x6B, 0x6B), {0x33, 0x33, 0x33}};
  if (scheme == "Custom")
    return {QColor(0xF6, 0xF0, 0xF8), QColor(0x7B, 0x4B, 0x94), {0x43, 0x26, 0x54}};
  return {QColor(0xEE, 0xF1, 0xF8), QColor(0x4A, 0x5B, 0xA6), {0x39, 0x42, 0x73}};
}

QPalette MakePalette(const SchemeColours& colours, bool dark_desktop) {
  const QColor end = dark_desktop ? Qt::black : Qt::white;
  const QColor ink =
      dark_desktop ? Mix(Qt::white, colours.mid, 0.08) : Mix(Qt::black, colours.dark, 0.3);
  const QColor window =
      dark_desktop ? Ground(Mix(colours.dark, Qt::black, 0.6), end) : Ground(colours.light, end);
  const QColor base = Mix(window, end, dark_desktop ? 0.3 : 0.75);
  const QColor alternate = Mix(window, base, 0.5);
  const QColor button =
      Mix(window, dark_desktop ? Qt::white : Qt::black, dark_desktop ? 0.08 : 0.02);
  const QColor text = ReadableOn(ink, {window, base, alternate, button}, 7);
  const QColor faint =
      ReadableOn(Mix(text, base, 0.4), {window, base, alternate, button}, kReadable);
  const QColor highlight = dark_desktop ? Mix(colours.mid, Qt::black, 0.15) : colours.mid;

  QPalette palette(button, window);
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, alternate);
  palette.setColor(QPalette::Button, button);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role,
                     ReadableOn(Mix(text, window, 0.5), {window, base, button}, 2.5));
  }
  palette.setColor(QPalette::PlaceholderText, faint);
  palette.setColor(QPalette::BrightText, text);
  palette.setColor(QPalette::ToolTipBase, base);
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::Highlight, highlight);
  palette.setColor(QPalette::Disabled, QPalette::Highlight, Mix(highlight, window, 0.6));
  const QColor on_highlight = Contrast(Qt::white, highlight) >= kReadable ? Qt::white : text;
  palette.setColor(QPalette::HighlightedText, ReadableOn(on_highlight, {highlight}, kReadable));
  palette.setColor(QPalette::Link, ReadableOn(colours.mid, {window, base}, kReadable));
  palette.setColor(QPalette::LinkVisited, ReadableOn(colours.dark, {window, base}, kReadable));
  return palette;
}

std::string StoredScheme(Settings& settings) {
  return settings.GetSettingText(kSection, "ColourScheme", "Blue");
}

SchemeColours StoredCustomColours(Settings& settings) {
  const SchemeColours start = ColoursOf("Custom");
  return {StoredColour(settings, "CustomLight", start.light),
          StoredColour(settings, "CustomMid", start.mid),
          StoredColour(settings, "CustomDark", start.dark)};
}

SchemeColours StoredColours(Settings& settings) {
  const std::string scheme = StoredScheme(settings);
  return scheme == "Custom" ? StoredCustomColours(settings) : ColoursOf(scheme);
}

void StoreScheme(Settings& settings, std::string_view scheme) {
  settings.SaveSettingText(kSection, "ColourScheme", scheme);
}

void StoreCustomColours(Settings& settings, const SchemeColours& colours) {
  settings.SaveSettingText(kSection, "CustomLight", NumberOf(colours.light));
  settings.SaveSettingText(kSection, "CustomMid", NumberOf(colours.mid));
  settings.SaveSettingText(kSection, "CustomDark", NumberOf(colours.dark));
}

}  // namespace tenora
