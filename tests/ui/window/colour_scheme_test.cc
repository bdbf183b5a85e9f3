#include "ui/window/appearance/colour_scheme.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <algorithm>
#include <memory>

#include "application.h"
#include "ui/window/appearance/edged_style.h"

namespace tenora {
namespace {

TEST(ColourScheme, EveryTextCanBeReadOnLightAndDarkDesktops) {
  std::vector<std::pair<std::string, SchemeColours>> schemes;
  for (const char* name : kColourSchemes) schemes.emplace_back(name, ColoursOf(name));
  // What a user may choose against all sense.
  schemes.push_back({"all white", {Qt::white, Qt::white, Qt::white}});
  schemes.push_back({"all black", {Qt::black, Qt::black, Qt::black}});
  schemes.push_back({"upside down", {Qt::black, Qt::gray, Qt::white}});
  schemes.push_back({"shrill", {Qt::yellow, Qt::green, Qt::cyan}});
  for (const auto& [name, colours] : schemes) {
    for (const bool dark : {false, true}) {
      const QPalette palette = MakePalette(colours, dark);
      const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
          {QPalette::WindowText, QPalette::Window},
          {QPalette::Text, QPalette::Base},
          {QPalette::Text, QPalette::AlternateBase},
          {QPalette::ButtonText, QPalette::Button},
          {QPalette::PlaceholderText, QPalette::Base},
          {QPalette::PlaceholderText, QPalette::Window},
          {QPalette::ToolTipText, QPalette::ToolTipBase},
          {QPalette::HighlightedText, QPalette::Highlight},
          {QPalette::Link, QPalette::Base},
          {QPalette::Link, QPalette::Window}};
      for (const auto& [text, ground] : pairs) {
        EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), kReadable)
            << name << (dark ? ", dark: " : ", light: ") << text << " on " << ground;
      }
      EXPECT_EQ(palette.color(QPalette::Window).lightness() < 128, dark) << name;
    }
  }
}

TEST(ColourScheme, ContrastIsThatOfRelativeLuminances) {
  EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21, 0.001);
  EXPECT_NEAR(Contrast(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
  EXPECT_EQ(Contrast(Qt::red, Qt::red), 1);
}

TEST(EdgedStyle, ShowsWhereEmptyControlsAreOnADarkDesktop) {
  constexpr double kSeen = 3;  // the contrast of what is no text
  EdgedStyle style;
  const QPalette palette = MakePalette(ColoursOf("Blue"), true);
  const std::pair<const char*, std::shared_ptr<QWidget>> controls[] = {
      {"check box", std::make_shared<QCheckBox>()},
      {"radio button", std::make_shared<QRadioButton>()},
      {"field", std::make_shared<QLineEdit>()},
      {"number", std::make_shared<QSpinBox>()}};
  for (const auto& [name, control] : controls) {
    control->setStyle(&style);
    control->setPalette(palette);
    control->resize(100, 30);
    const QImage shown = control->grab().toImage();
    double most = 0;
    for (int x = 0; x < 10; ++x) {
      const QColor pixel = shown.pixelColor(x, shown.height() / 2);
      most = std::max(most, Contrast(pixel, palette.color(QPalette::Window)));
    }
    EXPECT_GE(most, kSeen) << name;
  }
}

}  // namespace
}  // namespace tenora
