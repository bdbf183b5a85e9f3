// Moves the pictures of a letter into the parts of an e-mail.
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

  // Replaces the pictures in the document by marks.
  void Take(richtext::Document& document);
  // Replaces the marks by the image tags.
  std::string WithTags(std::string_view html) const;
  std::string WithoutMarks(std::string_view text) const;
};

}  // namespace tenora
