// Any bytes as a settings file: either refused, or read into something that writes and reads back
// the same.
#include <cstdlib>
#include <string_view>

#include "platform/registry/hive_file.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  using tenora::registry::HiveFile;
  const auto file = HiveFile::Parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!file) return 0;
  const std::string text = file->Text();
  const auto again = HiveFile::Parse(text);
  if (!again || again->Text() != text) std::abort();
  return 0;
}
