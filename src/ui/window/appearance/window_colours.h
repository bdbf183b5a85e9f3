// Applies the colour scheme of the program's windows and lets the user choose it.
#pragma once

#include <QWidget>
#include <string_view>

#include "data/settings.h"

namespace tenora {

class WindowColours {
 public:
  // Construct before any scheme is applied: whether the desktop is dark is read from its own
  // palette. `window` is the parent of the dialog for custom colours.
  WindowColours(Settings& settings, QWidget* window);

  // The stored scheme.
  void Apply();
  // Stores and applies a scheme. For "Custom" a dialog asks for the colours and previews them.
  void Choose(std::string_view scheme);

 private:
  Settings& settings_;
  QWidget* window_;
  bool dark_desktop_;
};

}  // namespace tenora
