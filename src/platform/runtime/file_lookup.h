// Files and folders found as on the file systems that this system's data comes from, which ignore
// the letter case of names.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tenora {

// Equal for names that differ only in letter case, of any script, or in how an accented letter is
// composed, as macOS writes names. A name that is no UTF-8 is equal to itself only.
std::string FoldedName(std::string_view name);

// The path itself where it exists; otherwise the one that exists with names that differ in each
// folder only as FoldedName ignores: the exact name first, then the first in byte order. The path
// unchanged where there is none. Never raises.
std::filesystem::path FindIgnoringCase(const std::filesystem::path& path);

}  // namespace tenora
