// Helpers for tests that write.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/access/check.h"
#include "platform/access/database_writer.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::test {

inline Value Text(const char* text) { return std::string(text); }
inline Value Number(std::int64_t number) { return number; }

// Of the file's present bytes: the check of a path would wait for a transaction that the test still
// holds.
inline std::vector<access::Finding> FindingsIn(const std::filesystem::path& path) {
  const std::string content = ReadWholeFile(path);
  const auto* bytes = reinterpret_cast<const std::byte*>(content.data());
  return access::CheckDatabase({bytes, bytes + content.size()}, path);
}

inline void ExpectHealthy(const std::filesystem::path& path) {
  for (const access::Finding& finding : FindingsIn(path)) ADD_FAILURE() << finding.Text();
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
