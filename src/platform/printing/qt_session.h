// The process's Qt application, which fonts and painting need. The windows have their own; without
// one the printing room makes one that touches no display.
#pragma once

#include <memory>

namespace tenora::printing {

// Keeps the application alive while held. Raises 482 (Printer error) when the process runs a Qt
// application without graphics. Call on the main thread.
std::shared_ptr<void> HoldQtApplication();

}  // namespace tenora::printing
