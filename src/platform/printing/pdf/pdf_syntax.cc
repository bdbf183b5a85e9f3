#include "platform/printing/pdf/pdf_syntax.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::printing {

void UnreadablePdf(const char* what) {
  throw StandardError(error_number::kPrinterError,
                      std::string("cannot read the finished pages (") + what + ")");
}

std::size_t PdfNumberAt(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) UnreadablePdf("no number");
  return number;
}

std::size_t PdfNumberBehind(std::string_view text, std::string_view word) {
  const std::size_t at = text.rfind(word);
  if (at == std::string_view::npos) UnreadablePdf("an entry is missing");
  text.remove_prefix(at + word.size());
  text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
  return PdfNumberAt(text);
}

std::string PdfText(std::string_view utf8) {
  std::string hex = "<FEFF";
  for (const char16_t unit : ToUtf16(utf8)) {
    char digits[5];
    std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned>(unit));
    hex += digits;
  }
  return hex + ">";
}

std::string PdfEntry(std::size_t start) {
  char entry[kPdfEntrySize + 1];
  std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", start);
  return entry;
}

}  // namespace tenora::printing
