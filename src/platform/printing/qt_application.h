// The process's Qt application, which fonts and painting need. A program with windows has its own;
// for one without, an application is made that needs no display.
#pragma once

#include <memory>

namespace tenora::printing {

// Keeps the application alive while held. Raises 482 (Printer error) when the process runs a Qt
// application without graphics. Call on the main thread.
std::shared_ptr<void> HoldQtApplication();

}  // namespace tenora::printing
