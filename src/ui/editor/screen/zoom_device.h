// A paper of a chosen resolution. A QTextDocument laid out for it comes out enlarged: its fonts,
// indents and tables all follow the resolution.
#pragma once

#include <QPaintDevice>

namespace tenora {

class ZoomDevice : public QPaintDevice {
 public:
  void SetDpi(int dpi) { dpi_ = dpi; }
  QPaintEngine* paintEngine() const override { return nullptr; }

 protected:
  int metric(PaintDeviceMetric metric) const override;

 private:
  int dpi_ = 96;
};

}  // namespace tenora
