// Folders of the user who runs the program.
#pragma once

#include <filesystem>

namespace tenora {

// HOME if that is an absolute path, else the home folder in the user database, else the root.
std::filesystem::path HomeFolder();

// The folder named by an environment variable such as XDG_CONFIG_HOME, else this folder of the home
// folder, such as ".config". A relative path counts as unset.
std::filesystem::path UserFolder(const char* variable, const char* in_home);

}  // namespace tenora
