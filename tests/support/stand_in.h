// Stands in for a desktop program on the path: records how it was called.
#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::test {

// While it lives, the path holds this program alone.
class StandIn {
 public:
  explicit StandIn(const std::string& name) {
    const auto program = folder_ / name;
    WriteWholeFile(program, "#!/bin/sh\nfor a; do printf '%s\\n' \"$a\"; done >'" +
                                (folder_ / "new").string() + "'\nPATH=/usr/bin:/bin mv '" +
                                (folder_ / "new").string() + "' '" + (folder_ / "call").string() +
                                "'\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    old_path_ = std::getenv("PATH");
    ::setenv("PATH", folder_.path().c_str(), 1);
  }
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;
  ~StandIn() { ::setenv("PATH", old_path_.c_str(), 1); }

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
  std::string old_path_;
};

}  // namespace tenora::test
