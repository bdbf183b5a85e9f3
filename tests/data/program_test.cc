#include "data/program.h"

#include <gtest/gtest.h>

#include "support/environment.h"

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
  for (const auto& c : cases) {
    const test::Environment environment(
        {{"HOME", "/home/jo"}, {"TENORA_HOME", c.named}, {"XDG_DATA_HOME", c.data}});
    EXPECT_EQ(ProgramFolder().string(), c.folder) << c.named;
  }
  const test::Environment relative({{"TENORA_HOME", "agency"}});
  EXPECT_EQ(ProgramFolder(), std::filesystem::current_path() / "agency");
}

}  // namespace
}  // namespace tenora
