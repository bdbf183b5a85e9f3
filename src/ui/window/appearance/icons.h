// The window's own icons: line drawings that take the colour of the text around them, so that they
// can be seen on light and dark desktops alike.
#pragma once

#include <QIcon>

namespace tenora {

// By file name without extension ("print"); drawn at any size.
QIcon LineIcon(const char* name);

}  // namespace tenora
