// Picture files as pictures of a letter.
#pragma once

#include <QByteArray>
#include <QImage>
#include <memory>

#include "platform/richtext/document.h"

namespace tenora {

// PNG and JPEG files as they are, whatever else Qt reads as PNG, metafiles as they are. Null for
// other bytes. The size on paper follows the file's resolution, and fits a page.
std::shared_ptr<const richtext::Picture> PictureOfFile(const QByteArray& file);
std::shared_ptr<const richtext::Picture> PictureOfImage(const QImage& image);

}  // namespace tenora
