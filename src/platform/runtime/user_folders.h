// Where the files of the user who runs the program lie.
#pragma once

#include <filesystem>

namespace tenora {

// HOME where that is a whole path, else the home the system knows of the user, else the root.
std::filesystem::path HomeFolder();

// The folder that a variable of the desktop names, as XDG_CONFIG_HOME, else this one of the home,
// as
// ".config". A relative path counts as unset.
std::filesystem::path UserFolder(const char* variable, const char* in_home);

}  // namespace tenora
