// Documents made by hand, and what an independent reader finds on the paper they are printed on.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/printing/printing.h"
#include "platform/richtext/document.h"
#include "support/test_files.h"

namespace tenora::test {

// The page area the tests print in: one inch inside A4, in twips.
inline constexpr int kInch = 1440;
inline constexpr int kPageWidth = 11906, kPageHeight = 16838;
inline constexpr int kTextWidth = kPageWidth - 2 * kInch, kTextHeight = kPageHeight - 2 * kInch;

// Times New Roman, Arial, Courier New; black, red, yellow.
richtext::Document EmptyDocument();
richtext::Run Text(std::string_view text, const richtext::CharFormat& format = {});
richtext::Paragraph Line(std::string_view text, const richtext::ParagraphFormat& format = {},
                         const richtext::CharFormat& characters = {});
richtext::Document DocumentOf(std::vector<richtext::Block> blocks);
// A cell of one paragraph with thin lines around it.
richtext::Cell CellOf(std::string_view text, int right_edge);

// A word on paper: 1-based page, box in twips from the page's corner.
struct Word {
  int page = 0;
  double left = 0, top = 0, right = 0, bottom = 0;
  std::string text;
};

struct Paper {
  std::filesystem::path file;
  std::vector<int> ends;  // what Format gave for each page

  int Pages() const { return static_cast<int>(ends.size()); }
  std::string Text() const;  // pages end in form feeds
  std::string PageText(int page) const;
  std::vector<Word> Words() const;
  // The first such word; the test fails when there is none.
  Word Find(std::string_view word) const;
};

// Prints page by page until all is on paper, or the pages exceed what any test needs.
Paper Print(const richtext::Document& document, const ScratchFolder& folder, int width = kTextWidth,
            int height = kTextHeight);

// Draws the document on the printer's open job; the result of Format for each page.
std::vector<int> DrawPages(printing::Printer& printer, const richtext::Document& document,
                           const printing::Rect& area);

// Standard output of a poppler tool.
std::string Poppler(const std::vector<std::string>& command);

}  // namespace tenora::test
