#include "ui/editor/screen/zoom_device.h"

namespace tenora {

int ZoomDevice::metric(PaintDeviceMetric metric) const {
  switch (metric) {
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
      return dpi_;
    case PdmDevicePixelRatio:
      return 1;
    case PdmDevicePixelRatioScaled:
      return static_cast<int>(devicePixelRatioFScale());
    case PdmDepth:
      return 32;
    default:
      return 1;
  }
}

}  // namespace tenora
