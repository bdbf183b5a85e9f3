// The pictures of a letter as parts of an e-mail.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/mail/message.h"
#include "platform/richtext/document.h"

namespace tenora {

class EmailPictures {
 public:
  // The address under which the HTML shows the picture, "cid:…"; empty for a picture that cannot be
  // shown. A picture that a letter shows twice is one part.
  std::string AddressOf(const richtext::Picture& picture);
  // In the order in which they were first asked for.
  std::vector<mail::Part> TakeParts() { return std::move(parts_); }

 private:
  std::vector<mail::Part> parts_;
  // By content and what is shown of it.
  std::map<std::tuple<richtext::Picture::Kind, std::string, richtext::Picture::Crop>, std::string>
      addresses_;
};

}  // namespace tenora
