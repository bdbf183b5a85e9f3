// The control words of page setup, in the head and in section formatting.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class PageWords {
 public:
  // False for other words. Section words set the section that is being read.
  bool Take(const Token& word);
  // The words of the borders around the page, which come before paragraphs' border words are looked
  // for; false for others. They count in the letter's text only.
  bool TakeBorder(const Token& word, const ColourTable& colours, bool counts);
  // \sect: ends the section, whose page is then known, and begins the next.
  std::shared_ptr<Section> BeginSection();
  // The section being read; null for the first, which is the document's page.
  Section* section() { return section_.get(); }
  // The space above and below paragraphs that have it set automatically, twips.
  int AutomaticSpace() const;
  // The source has ended: completes the last section and the document.
  void Apply(Document* document);

 private:
  // What was said; nothing where the page is as the head says.
  struct Lengths {
    std::optional<int> width, height, left, top, right, bottom;

    bool NamesMargin() const { return left || top || right || bottom; }
  };
  using Others = std::map<std::string, std::string, std::less<>>;  // by word, with parameter

  bool TakeLength(const Token& word);
  bool TakeOther(const Token& word);
  bool TakeColumn(const Token& word);
  PageSetup Page() const;
  void EndSection();

  Lengths head_, own_;  // of the document; of the section
  bool landscape_ = false;
  std::optional<bool> own_landscape_;
  Others head_others_, others_;
  PageBorders borders_, ignored_;
  Border* border_ = nullptr;  // the one whose words are read
  Section::Begin begin_ = Section::Begin::kPage;
  int default_tab_ = 720;
  PageSetup first_;
  std::shared_ptr<Section> section_;
};

}  // namespace tenora::richtext
