#include "data/program.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/test_files.h"

namespace tenora {
namespace {

TEST(ProgramFolder, IsNamedByTheEnvironmentOrTheUsersData) {
  const struct {
    const char *named, *data;
    const char* folder;
  } cases[] = {
      {"/srv/agency", "/data", "/srv/agency"},
      {"/srv/agency/", "/data", "/srv/agency"},
      {"/srv/x/../agency//", "/data", "/srv/agency"},
      {"/", "/data", "/"},
      {"", "/data", "/data/Tenora"},
      {"", "/data/", "/data/Tenora"},
      {"", "relative", "/home/jo/.local/share/Tenora"},
  };
  const std::string old_home = std::getenv("HOME") ? std::getenv("HOME") : "/";
  ::setenv("HOME", "/home/jo", 1);
  for (const auto& c : cases) {
    ::setenv("TENORA_HOME", c.named, 1);
    ::setenv("XDG_DATA_HOME", c.data, 1);
    EXPECT_EQ(ProgramFolder().string(), c.folder) << c.named;
  }
  ::setenv("TENORA_HOME", "agency", 1);
  EXPECT_EQ(ProgramFolder(), std::filesystem::current_path() / "agency");
  ::unsetenv("TENORA_HOME");
  ::unsetenv("XDG_DATA_HOME");
  ::setenv("HOME", old_home.c_str(), 1);
}

}  // namespace
}  // namespace tenora
