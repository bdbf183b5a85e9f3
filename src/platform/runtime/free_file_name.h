// Names that are taken, and those that are not yet: "Notice.rtf", "Notice(1).rtf", …
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "platform/runtime/files.h"

namespace tenora {

// Whether there is a file of this name, or a link that leads nowhere. Raises the errors of
// FileError where that cannot be known.
bool NameTaken(const std::filesystem::path& path);

// Writes a new file of this name or, where it is taken, of the first free of "stem(1).ext",
// "stem(2).ext", …, also when other programs write there at the same moment. `accept` is asked
// before each attempt to take a name and may refuse it. The result is the path written. Raises the
// errors of WriteNewFile.
std::filesystem::path WriteUnderFreeName(
    const std::filesystem::path& wanted, std::string_view content,
    Durability durability = Durability::kSynced,
    const std::function<bool(const std::filesystem::path&)>& accept = {});

// The file that has this name or, in the same folder, one that differs from it in letter case only:
// a Windows folder, or one shared by SMB, has room for one of them. Empty where there is none.
std::filesystem::path FileOfName(const std::filesystem::path& wanted);

}  // namespace tenora
