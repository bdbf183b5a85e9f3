// The control words of page setup, in the head and in section formatting.
#pragma once

#include <map>
#include <string>

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class PageWords {
 public:
  // False for other words. Section formatting of the first section counts, that of
  // later ones is dropped: EndFirstSection.
  bool Take(const Token& word);
  void EndFirstSection() { first_section_ended_ = true; }
  // True when a section begins on the page where the one before ended.
  bool continuous() const { return continuous_; }
  void Apply(Document* document) const;

 private:
  PageSetup page_;
  int default_tab_ = 720;
  std::map<std::string, std::string, std::less<>> others_;  // by word, with parameter
  bool first_section_ended_ = false;
  bool continuous_ = false;
};

}  // namespace tenora::richtext
