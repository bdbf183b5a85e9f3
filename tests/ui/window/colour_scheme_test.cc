#include "ui/window/appearance/colour_scheme.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tenora
