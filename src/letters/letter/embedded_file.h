// Files that travel inside a letter, as a packager's object: the file's name and bytes in an
// "\object" group that word processors open with a double click.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tenora {

struct EmbeddedFile {
  std::string name;  // UTF-8, without folders
  std::string bytes;

  bool operator==(const EmbeddedFile&) const = default;
};

// A larger file makes a letter that cannot be mailed.
inline constexpr std::size_t kLargestEmbeddedFile = std::size_t{25} << 20;

// The RTF group of the object; `result` is the group that is seen in its place, a picture.
std::string EmbeddedFileGroup(const EmbeddedFile& file, std::string_view result);

// The file in an object's group; none for an object of another kind or damaged data. The name may
// be anything: make it safe before it names a file.
std::optional<EmbeddedFile> ReadEmbeddedFile(std::string_view object_group);

}  // namespace tenora
