// Documents of word processors as rich text, through LibreOffice where it is installed.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "platform/runtime/error.h"

namespace tenora::office {

// LibreOffice is not installed; the description says what to install.
class NoOffice : public RuntimeError {
 public:
  static constexpr int kNumber = 429;
  NoOffice();
};

struct Conversion {
  std::filesystem::path program;  // empty: soffice, looked for in the usual places
  std::chrono::milliseconds time{60'000};
  std::function<bool()> stopped;  // asked while it lasts; true ends it
};

// Whether a file of this name is converted: .docx, .doc, .odt, .html and the like, letter case
// ignored.
bool Converts(const std::filesystem::path& document);

// The document as RTF source. Its macros do not run, its links are not followed, and LibreOffice
// sees a copy of it in a folder of its own. Raises NoOffice (429), 53, 70 or 75 for a file that
// cannot be read, 32755 (Cancel was selected) when stopped, and 321 (Invalid file format), with the
// file's name and what LibreOffice says, for a document that it cannot read in the time.
std::string ConvertToRtf(const std::filesystem::path& document, const Conversion& conversion = {});

}  // namespace tenora::office
