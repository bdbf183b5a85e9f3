// Reads from a database file that other programs may be changing: each reading sees the file in one
// state.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/access/database_file.h"
#include "platform/access/database_writer.h"
#include "platform/access/file_state.h"
#include "platform/runtime/error.h"

namespace tenora::query {

enum class ReadLocking : std::uint8_t {
  kLock,  // lock out other programs' transactions while the file is read
  kNone,  // this process has locked them out already
};

class FileReader {
 public:
  FileReader(std::filesystem::path path, const access::FileState& state, ReadLocking locking);

  // The file as it was last opened, by the first call or by Read. Raises the errors of
  // access::DatabaseFile::Open.
  const access::DatabaseFile& File();
  // Counts the states that the file was opened in: what was learnt of its tables in an earlier one
  // may be out of date.
  int opened() const { return opened_; }

  // Calls `read` with the file as it is now, transactions locked out. Whoever does not use locks
  // may write meanwhile: `read` is then called again, and what it found or raised before is
  // forgotten; after so many tries, what the last one found is taken. Raises what opening the file,
  // access::ReadLock::Take and `read` raise.
  template <typename Reading>
  auto Read(int most_tries, const Reading& read);

  // Locks transactions out until EndStep, for a scan that reads on from row to row, and opens the
  // file anew if it has changed since it was opened.
  void BeginStep();
  void EndStep();
  bool within_step() const { return within_step_; }

 private:
  std::unique_ptr<access::ReadLock> Lock() const;
  // Opens the file unless it is open in this state.
  const access::DatabaseFile& OpenIn(const access::FileState& state);
  access::FileState Now() const { return access::ReadFileState(path_); }

  std::filesystem::path path_;
  access::FileState state_;
  ReadLocking locking_;
  std::shared_ptr<access::DatabaseFile> file_;
  int opened_ = 0;
  std::unique_ptr<access::ReadLock> step_lock_;
  bool within_step_ = false;
};

template <typename Reading>
auto FileReader::Read(int most_tries, const Reading& read) {
  const std::unique_ptr<access::ReadLock> lock = within_step_ ? nullptr : Lock();
  for (int tries = 1;; ++tries) {
    const access::FileState before = Now();
    const bool last = tries >= most_tries;
    try {
      auto result = read(OpenIn(before));
      if (last || Now() == before) return result;
    } catch (const RuntimeError&) {
      if (last || Now() == before) throw;
    }
  }
}

}  // namespace tenora::query
