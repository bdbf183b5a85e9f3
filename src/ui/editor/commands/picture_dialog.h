// The dialog for a picture's size and place.
#pragma once

#include <QWidget>
#include <optional>

#include "platform/richtext/picture_look.h"

namespace tenora {

// Nothing when cancelled. `own`: what its button for the original size gives.
std::optional<richtext::PictureLook> AskPictureLook(QWidget* parent,
                                                    const richtext::PictureLook& now,
                                                    const richtext::PictureLook& own);

}  // namespace tenora
