#include "platform/runtime/pdf_target.h"

#include <cstdlib>

#include "platform/runtime/text.h"

namespace tenora {

std::filesystem::path PdfTargetFromEnvironment() {
  const char* const target = std::getenv("TENORA_PDF");
  return target == nullptr ? "" : target;
}

bool IsPdfFile(const std::filesystem::path& target) {
  return EqualsNoCase(target.extension().string(), ".pdf");
}

std::filesystem::path FolderOfPdfTarget(const std::filesystem::path& target) {
  if (!IsPdfFile(target)) return target;
  return target.has_parent_path() ? target.parent_path() : ".";
}

}  // namespace tenora
