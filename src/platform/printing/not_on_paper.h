// What a letter holds that its print does not show.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::printing {

// In words for people ("a WMF picture", "a formula"), each once, in the order of the document and
// then of its headers and footers. Pictures are decoded. Call on the main thread.
std::vector<std::string> NotOnPaper(const richtext::Document& document);

// The same of one run after the other.
class PaperFinder {
 public:
  enum class Place { kText, kHead, kTextBox };

  // What the run holds that is not shown; empty for nothing. A picture is decoded. Call on the main
  // thread.
  std::string NotShown(const richtext::Run& run, Place place);

 private:
  std::string NotShown(const std::vector<richtext::Block>& blocks, Place place);
  std::string_view NotDrawn(const richtext::Picture& picture);

  std::shared_ptr<void> application_;
};

}  // namespace tenora::printing
