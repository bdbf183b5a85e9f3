#include "support/test_files.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "platform/runtime/files.h"

namespace tenora::test {

std::filesystem::path SourceDir() { return TENORA_SOURCE_DIR; }
std::filesystem::path BinaryDir() { return TENORA_BINARY_DIR; }
std::filesystem::path SampleDatabase() { return SourceDir() / "examples/agency/property.mdb"; }

ScratchFolder::ScratchFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tenora-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder: " + name);
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment, const std::string& input) {
  // Files rather than pipes, so that no amount of output can block either side.
  const ScratchFolder scratch;
  const auto in = scratch / "in", out = scratch / "out", err = scratch / "err";
  WriteWholeFile(in, input);
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    ::dup2(::open(in.c_str(), O_RDONLY), 0);
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
    ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
    for (const std::string& entry : environment) ::putenv(const_cast<char*>(entry.c_str()));
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ProcessResult result;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.output = ReadWholeFile(out);
  result.errors = ReadWholeFile(err);
  return result;
}

}  // namespace tenora::test
