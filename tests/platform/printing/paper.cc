#include "platform/printing/paper.h"

#include <gtest/gtest.h>

#include <regex>

#include "platform/printing/document_length.h"

namespace tenora::test {
namespace {

constexpr double kTwipsPerPoint = 20;
constexpr int kMostPages = 500;

}  // namespace

richtext::Document EmptyDocument() {
  richtext::Document document;
  document.fonts = {{0, "Times New Roman", "roman", 0, 0},
                    {1, "Arial", "swiss", 0, 0},
                    {2, "Courier New", "modern", 0, 0}};
  document.colours = {{.automatic = true}, {.red = 255}, {.red = 255, .green = 255}};
  return document;
}

richtext::Run Text(std::string_view text, const richtext::CharFormat& format) {
  richtext::Run run;
  run.format = format;
  run.text = text;
  return run;
}

richtext::Paragraph Line(std::string_view text, const richtext::ParagraphFormat& format,
                         const richtext::CharFormat& characters) {
  richtext::Paragraph paragraph;
  paragraph.format = format;
  paragraph.mark = characters;
  if (!text.empty()) paragraph.runs.push_back(Text(text, characters));
  return paragraph;
}

richtext::Document DocumentOf(std::vector<richtext::Block> blocks) {
  richtext::Document document = EmptyDocument();
  document.blocks = std::move(blocks);
  return document;
}

richtext::Cell CellOf(std::string_view text, int right_edge) {
  richtext::Cell cell;
  cell.right_edge = right_edge;
  cell.top = cell.bottom = cell.left = cell.right = {true, 10, 0};
  cell.blocks.emplace_back(Line(text));
  return cell;
}

std::string Poppler(const std::vector<std::string>& command) {
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.status, 0) << command.front() << ": " << result.errors;
  return result.output;
}

std::string Paper::Text() const { return Poppler({"pdftotext", "-layout", file.string(), "-"}); }

std::string Paper::PageText(int page) const {
  const std::string number = std::to_string(page);
  return Poppler({"pdftotext", "-f", number, "-l", number, file.string(), "-"});
}

std::vector<Word> Paper::Words() const {
  const std::string boxes = Poppler({"pdftotext", "-bbox", file.string(), "-"});
  static const std::regex kBox(
      "<page |<word xMin=\"([^\"]+)\" yMin=\"([^\"]+)\" xMax=\"([^\"]+)\" yMax=\"([^\"]+)\">"
      "([^<]*)</word>");
  std::vector<Word> words;
  int page = 0;
  for (std::sregex_iterator match(boxes.begin(), boxes.end(), kBox), end; match != end; ++match) {
    if (!(*match)[1].matched) {
      ++page;
      continue;
    }
    const auto twips = [&](std::size_t group) {
      return std::stod((*match)[group].str()) * kTwipsPerPoint;
    };
    words.push_back({page, twips(1), twips(2), twips(3), twips(4), (*match)[5].str()});
  }
  return words;
}

Word Paper::Find(std::string_view word) const {
  for (const Word& found : Words()) {
    if (found.text == word) return found;
  }
  ADD_FAILURE() << "not on paper: " << word;
  return {};
}

std::vector<int> DrawPages(printing::Printer& printer, const richtext::Document& document,
                           const printing::Rect& area) {
  printing::FormatRange range;
  range.document = &document;
  range.print_rect = area;
  range.page_rect = {0, 0, printer.Width(), printer.Height()};
  const int length = printing::DocumentLength(document);
  std::vector<int> ends;
  while (static_cast<int>(ends.size()) < kMostPages) {
    ends.push_back(printer.Format(range));
    if (ends.back() >= length) break;
    EXPECT_GT(ends.back(), range.range.from);
    range.range.from = ends.back();
    printer.NewPage();
  }
  printer.Format({});
  return ends;
}

Paper Print(const richtext::Document& document, const ScratchFolder& folder, int width,
            int height) {
  const auto printers =
      printing::Printers::Create({printing::kPdfPrinterName, folder / "paper.pdf"});
  printing::Printer& printer = printers->Current();
  printer.StartDocument("Paper", {});
  Paper paper;
  paper.ends = DrawPages(printer, document, {kInch, kInch, kInch + width, kInch + height});
  paper.file = printer.EndJob();
  return paper;
}

}  // namespace tenora::test
