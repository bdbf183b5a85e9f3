#include "output/embedded_picture.h"

#include "platform/mail/message.h"
#include "platform/printing/picture_file.h"

namespace tenora {

std::string EmbeddedPicture(const richtext::Picture& picture) {
  const auto file = printing::ShowableFile(picture);
  if (!file) return {};
  return "data:" + file->content_type + ";base64," + mail::Base64(file->bytes);
}

}  // namespace tenora
