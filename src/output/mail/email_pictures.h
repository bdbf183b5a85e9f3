// The pictures of a letter on their way into an e-mail.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/mail/message.h"
#include "platform/richtext/document.h"

namespace tenora {

// The pictures of a letter in the order of the text. Each leaves a mark in its place, two
// private-use characters around its number, that passes through the HTML converter.
struct EmailPictures {
  std::vector<mail::Part> parts;
  std::vector<std::string> image_tags;  // "<img src="cid:…" …>", one a part

  // Takes the pictures out of the document and puts marks into their places.
  void Take(richtext::Document& document);
  // Puts the image tags in the place of the marks.
  std::string WithTags(std::string_view html) const;
  std::string WithoutMarks(std::string_view text) const;
};

}  // namespace tenora
