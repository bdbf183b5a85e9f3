// What makes text as wide on the screen as on paper, and its lines as high. Qt's fonts on the
// screen are whole pixels in size and its lines whole pixels in height.
#pragma once

#include <QString>
#include <map>
#include <tuple>

#include "platform/richtext/document.h"

namespace tenora {

struct ScreenFit {
  double letter_spacing = 100;  // percent
  double line_pitch = 1;        // of the height that Qt gives a line
};

class ScreenFits {
 public:
  // Pixels per inch of the screen, enlarged by the zoom.
  void SetResolution(int dpi);
  const ScreenFit& Of(const QString& family, const richtext::CharFormat& format);

 private:
  using Key = std::tuple<QString, int, bool, bool>;

  int dpi_ = 96;
  std::map<Key, ScreenFit> fits_;
};

}  // namespace tenora
