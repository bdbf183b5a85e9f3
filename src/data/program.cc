#include "data/program.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace tenora {
namespace {

namespace fs = std::filesystem;

fs::path WithoutTrailingSeparator(const fs::path& folder) {
  const fs::path normal = fs::absolute(folder).lexically_normal();
  return normal.has_filename() || normal == normal.root_path() ? normal : normal.parent_path();
}

fs::path HomeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
  const passwd* entry = ::getpwuid(::getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

}  // namespace

fs::path ProgramFolder() {
  const char* named = std::getenv("TENORA_HOME");
  if (named != nullptr && *named != '\0') return WithoutTrailingSeparator(named);
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (!error && fs::exists(executable.parent_path() / "property.mdb", error)) {
    return executable.parent_path();
  }
  const char* data = std::getenv("XDG_DATA_HOME");
  // A relative path counts as unset.
  const bool usable = data != nullptr && *data == '/';
  const fs::path data_home = usable ? fs::path(data) : HomeFolder() / ".local/share";
  return WithoutTrailingSeparator(data_home / "Tenora");
}

}  // namespace tenora
