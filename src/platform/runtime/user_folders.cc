#include "platform/runtime/user_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace tenora {

std::filesystem::path HomeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
  const passwd* entry = ::getpwuid(::getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

std::filesystem::path UserFolder(const char* variable, const char* in_home) {
  const char* named = std::getenv(variable);
  return named != nullptr && *named == '/' ? std::filesystem::path(named) : HomeFolder() / in_home;
}

}  // namespace tenora
