// The window's own icons: line drawings that take the colour of the text around them, so that they
// can be seen on light and dark desktops alike.
#pragma once

#include <QIcon>

namespace tenora {

// By the file's name without its ending ("print"); drawn at whatever size is asked for.
QIcon LineIcon(const char* name);

}  // namespace tenora
