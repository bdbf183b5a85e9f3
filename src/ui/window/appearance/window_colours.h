// The colour scheme that the program's windows wear.
#pragma once

#include <QWidget>
#include <string_view>

#include "data/settings.h"

namespace tenora {

class WindowColours {
 public:
  // Call before a scheme is applied: the desktop's own colours tell whether it is a dark one. The
  // custom colours are asked for over `window`.
  WindowColours(Settings& settings, QWidget* window);

  // The stored scheme.
  void Apply();
  // Stores a scheme and applies it; of "Custom" the colours are asked for first, and shown while
  // they are chosen.
  void Choose(std::string_view scheme);

 private:
  Settings& settings_;
  QWidget* window_;
  bool dark_desktop_;
};

}  // namespace tenora
