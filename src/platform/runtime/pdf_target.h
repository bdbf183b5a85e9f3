// Where TENORA_PDF has the PDF printer write: to a folder, or to one file when it ends in ".pdf".
#pragma once

#include <filesystem>

namespace tenora {

// Empty where it is not set.
std::filesystem::path PdfTargetFromEnvironment();

bool IsPdfFile(const std::filesystem::path& target);

// The folder that is written to; empty for no target.
std::filesystem::path FolderOfPdfTarget(const std::filesystem::path& target);

}  // namespace tenora
