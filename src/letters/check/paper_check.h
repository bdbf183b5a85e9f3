// Finds what a letter holds that will not appear on paper.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "letters/letter_check.h"
#include "platform/printing/font_coverage.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// The letters of a batch share pictures and drawings with their template: while those are the same
// as at the last call, their findings are given again and nothing is parsed.
class PaperCheck {
 public:
  // Warnings only. Call on the main thread.
  std::vector<LetterFinding> Findings(const RichTextBox& letter);

 private:
  const std::vector<LetterFinding>& PictureFindings(const RichTextBox& letter);

  printing::FontCoverage fonts_;
  std::optional<std::size_t> known_;  // identifies the pictures and drawings of findings_
  std::vector<LetterFinding> findings_;
};

}  // namespace tenora
