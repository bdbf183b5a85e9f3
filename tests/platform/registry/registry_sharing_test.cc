// Several programs at work on one hive.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "platform/registry/registry.h"
#include "support/test_files.h"

namespace tenora::registry {
namespace {

constexpr const char* kKey = "SOFTWARE\\Tenora\\Test";
constexpr int kWriters = 6;
constexpr int kValuesEach = 10;

pid_t InAnotherProcess(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? 0 : 1);
  return child;
}

bool Succeeded(pid_t child) {
  int status = 1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string Name(int writer, int value) {
  return "writer " + std::to_string(writer) + " value " + std::to_string(value);
}

TEST(RegistrySharing, LosesNoUpdateAndShowsNoHalfFileAmongManyProcesses) {
  const test::ScratchFolder folder;
  const auto open = [&] { return Registry::Open(folder.path(), folder.path()); };
  std::vector<pid_t> children;
  for (int writer = 0; writer < kWriters; ++writer) {
    children.push_back(InAnotherProcess([&] {
      const auto registry = open();
      for (int value = 0; value < kValuesEach; ++value) {
        const StoredValue text{ValueType::kText, std::string(500, 'v') + std::to_string(value)};
        if (registry->Set(Hive::kCurrentUser, kKey, Name(writer, value), text) != kSuccess) {
          return false;
        }
      }
      return true;
    }));
  }
  for (int reader = 0; reader < 2; ++reader) {
    children.push_back(InAnotherProcess([&] {
      const auto registry = open();
      for (int i = 0; i < 500; ++i) {
        StoredValue value;
        const int status = registry->Query(Hive::kCurrentUser, kKey, Name(0, 0), value);
        if (status != kSuccess && status != kFileNotFound) return false;
      }
      return true;
    }));
  }
  for (const pid_t child : children) EXPECT_TRUE(Succeeded(child));

  const auto registry = open();
  StoredValue value;
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int i = 0; i < kValuesEach; ++i) {
      EXPECT_EQ(registry->Query(Hive::kCurrentUser, kKey, Name(writer, i), value), kSuccess);
    }
  }
}

}  // namespace
}  // namespace tenora::registry
