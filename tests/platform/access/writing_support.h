// Helpers for tests that write.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/access/check.h"
#include "platform/access/database_writer.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::test {

inline Value Text(const char* text) { return std::string(text); }
inline Value Number(std::int64_t number) { return number; }

inline void ExpectHealthy(const std::filesystem::path& path) {
  for (const access::Finding& finding : access::CheckDatabase(path)) {
    ADD_FAILURE() << finding.Text();
  }
}

// A temporary database file with these bytes.
class ScratchDatabase {
 public:
  explicit ScratchDatabase(const std::string& bytes) { WriteWholeFile(path_, bytes); }
  const std::filesystem::path& path() const { return path_; }

 private:
  ScratchFolder folder_;
  std::filesystem::path path_ = folder_ / "things.mdb";
};

}  // namespace tenora::test
