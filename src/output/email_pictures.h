// The pictures of a letter on their way into an e-mail.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/mail/message.h"
#include "platform/richtext/document.h"

namespace tenora {

// The letter's pictures in the order of the text, each with the marks that stand for it.
struct EmailPictures {
  std::vector<mail::Part> parts;
  std::vector<std::string> image_tags;  // "<img src="cid:…" …>", one a part

  // Puts a mark that the HTML converter lets through in the place of each picture's group.
  std::string WithMarks(const richtext::Document& document, std::string source);
  // Puts the image tags in the place of the marks.
  std::string WithTags(std::string_view html) const;
};

}  // namespace tenora
