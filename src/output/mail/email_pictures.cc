#include "output/mail/email_pictures.h"

#include <array>
#include <cstdio>
#include <functional>

#include "platform/printing/picture_file.h"

namespace tenora {

std::string EmailPictures::AddressOf(const richtext::Picture& picture) {
  const auto [known, is_new] = addresses_.try_emplace({picture.kind, picture.bytes, picture.crop});
  if (!is_new) return known->second;
  const auto file = printing::ShowableFile(picture);
  if (!file) return {};
  const std::string name = "picture" + std::to_string(parts_.size() + 1);
  // A content identifier must be unique across messages.
  std::array<char, 32> digest{};
  std::snprintf(digest.data(), digest.size(), ".%016zx", std::hash<std::string>()(file->bytes));
  parts_.push_back(
      {file->content_type, name + file->extension, name + digest.data() + "@tenora", file->bytes});
  known->second = "cid:" + parts_.back().content_id;
  return known->second;
}

}  // namespace tenora
