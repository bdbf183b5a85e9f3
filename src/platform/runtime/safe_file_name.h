// Names of people and letters as names of files and folders.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tenora {

// The longest name that file systems take, in bytes.
inline constexpr std::size_t kLongestFileName = 255;

// A name that stays in its folder and that Windows, macOS and Linux can all open, at most `longest`
// bytes of UTF-8. Ordinary names stay as they are. Slashes, backslashes and colons become "-" and
// double quotes "`", as the package writes tenants' names; leading blanks and trailing blanks and
// dots are dropped, as Windows drops them. Other characters that a system forbids and leading dots
// become "_", and a device name of Windows (CON, NUL, COM1, ...) gets "_" in front.
//
// A name that had to be changed in such a way, or was cut, ends in "~" and eight hexadecimal digits
// of the whole name's hash, so that two names do not become one.
std::string SafeFileName(std::string_view name, std::size_t longest = kLongestFileName);

// Why SafeFileName would change a name, as a clause about it: "it contains : ?". Empty for a name
// that every system can open; blanks around it do not count.
std::string FileNameFault(std::string_view name, std::size_t longest = kLongestFileName);

// The safe form of a name, always followed by the hash of the name.
std::string FileNameWithHash(std::string_view name, std::size_t longest = kLongestFileName);

// The safe form of a name, which no other name has: every name that is not its own safe form, or
// looks as if it ended in a hash, is followed by its hash.
std::string DistinctFileName(std::string_view name, std::size_t longest = kLongestFileName);

// The name as version 1.0 made it, which knew nothing of what Windows forbids: it kept : " * ? < >
// | and the names of devices. To find what it saved.
std::string FileNameOfVersion1(std::string_view name, std::size_t longest = kLongestFileName);

}  // namespace tenora
