// Stands in for a desktop program on the path: records how it was called.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/environment.h"
#include "support/test_files.h"

namespace tenora::test {

// While it lives, the path holds this program alone.
class StandIn {
 public:
  explicit StandIn(const std::string& name, int exit_status = 0) {
    const auto program = folder_ / name;
    WriteWholeFile(program, "#!/bin/sh\nfor a; do printf '%s\\n' \"$a\"; done >'" +
                                (folder_ / "new").string() + "'\nPATH=/usr/bin:/bin mv '" +
                                (folder_ / "new").string() + "' '" + (folder_ / "call").string() +
                                "'\nexit " + std::to_string(exit_status) + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  }

  // The arguments, once the program has run.
  std::vector<std::string> Call() const {
    while (!std::filesystem::exists(folder_ / "call")) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return Split(ReadWholeFile(folder_ / "call"), "\n");
  }
  // For the drafts; its name has what shells and lists stumble over.
  std::filesystem::path Scratch() const { return folder_ / "it's, \"my\" mail"; }

 private:
  ScratchFolder folder_;
  Environment path_{{{"PATH", folder_.path()}}};
};

}  // namespace tenora::test
