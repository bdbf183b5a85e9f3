#include "platform/dialogs/file_filter.h"

#include "platform/runtime/text.h"

namespace tenora {

std::vector<FileFilter> ParseFileFilter(std::string_view text) {
  std::vector<FileFilter> filters;
  const std::vector<std::string> parts = Split(text, "|");
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    FileFilter filter{parts[i], {}};
    for (const std::string& pattern : Split(parts[i + 1], ";")) {
      const std::string_view trimmed = TrimBlanks(pattern);
      if (!trimmed.empty()) filter.patterns.emplace_back(trimmed);
    }
    if (!filter.patterns.empty()) filters.push_back(std::move(filter));
  }
  return filters;
}

}  // namespace tenora
