#include "platform/printing/paper_size.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <utility>

namespace tenora::printing {
namespace {

constexpr Paper kA4{11906, 16838, 0, 0}, kLetter{12240, 15840, 0, 0};

// Twips; less is no paper but a mistake.
constexpr int kSmallestPaper = 1440;

}  // namespace

Paper Oriented(Paper paper, Orientation orientation) {
  if (orientation == Orientation::kLandscape && paper.width < paper.height) {
    std::swap(paper.width, paper.height);
    std::swap(paper.offset_x, paper.offset_y);
  }
  return paper;
}

Paper PaperFor(const richtext::PageSetup& page, const Paper& printers, bool any_size) {
  const bool across = page.landscape || printers.width > printers.height;
  const bool own = any_size && page.width >= kSmallestPaper && page.height >= kSmallestPaper;
  return Oriented(own ? Paper{page.width, page.height, 0, 0} : printers,
                  across ? Orientation::kLandscape : Orientation::kAsPrinterIsSet);
}

Paper RegionalPaper() {
  std::string_view name;
  for (const char* variable : {"LC_ALL", "LC_PAPER", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    name = value;
    break;
  }
  const std::size_t underscore = name.find('_');
  if (underscore == std::string_view::npos) return kA4;
  const std::string_view country = name.substr(underscore + 1, 2);
  constexpr std::string_view kLetterCountries[] = {"US", "CA", "MX", "PH", "CL", "CO", "CR",
                                                   "GT", "NI", "PA", "PR", "SV", "VE"};
  const bool letter = std::find(std::begin(kLetterCountries), std::end(kLetterCountries),
                                country) != std::end(kLetterCountries);
  return letter ? kLetter : kA4;
}

}  // namespace tenora::printing
