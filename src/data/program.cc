#include "data/program.h"

#include <cstdlib>

#include "platform/runtime/file_lookup.h"
#include "platform/runtime/user_folders.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

fs::path WithoutTrailingSeparator(const fs::path& folder) {
  const fs::path normal = fs::absolute(folder).lexically_normal();
  return normal.has_filename() || normal == normal.root_path() ? normal : normal.parent_path();
}

fs::path OwnFolder() {
  return WithoutTrailingSeparator(UserFolder("XDG_DATA_HOME", ".local/share") / "Tenora");
}

}  // namespace

fs::path ProgramFolder() {
  const char* named = std::getenv("TENORA_HOME");
  if (named != nullptr && *named != '\0') return WithoutTrailingSeparator(named);
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (!error && fs::exists(FindIgnoringCase(executable.parent_path() / "property.mdb"), error)) {
    return executable.parent_path();
  }
  return OwnFolder();
}

void MakeOwnProgramFolder() {
  std::error_code error;
  if (ProgramFolder() == OwnFolder()) fs::create_directories(OwnFolder(), error);
}

fs::path StateFolder() {
  return WithoutTrailingSeparator(UserFolder("XDG_STATE_HOME", ".local/state") / "tenora");
}

}  // namespace tenora
