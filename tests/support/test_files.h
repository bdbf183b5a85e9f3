// Scratch folders, the sample agency and outside programs, for every test.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tenora::test {

// The checkout the tests were built from.
std::filesystem::path SourceDir();
// The folder of the built program.
std::filesystem::path BinaryDir();
// The sample agency's database, read only: copy it before writing.
std::filesystem::path SampleDatabase();

// A new empty folder, removed with everything in it at the end of its life.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

struct ProcessResult {
  int status = -1;  // exit status; 128 + signal number when killed
  std::string output;
  std::string errors;
};

// Runs a program without a shell. `environment` entries ("NAME=value") are added to ours, `input`
// is its standard input.
ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {},
                         const std::string& input = {});

}  // namespace tenora::test
