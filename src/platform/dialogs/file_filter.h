// The filter of a file chooser, as the system's texts write it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

struct FileFilter {
  std::string name;
  std::vector<std::string> patterns;  // "*.bmp"

  bool operator==(const FileFilter&) const = default;
};

// "Name|*.a;*.b;|Name|*.c" split. Empty patterns and names without patterns are left out.
std::vector<FileFilter> ParseFileFilter(std::string_view text);

}  // namespace tenora
