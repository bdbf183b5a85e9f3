#include "platform/query/cache/file_reader.h"

#include <chrono>
#include <utility>

namespace tenora::query {
namespace {

// Far more than another program's transaction takes.
constexpr std::chrono::milliseconds kWaitForWriters{10000};

}  // namespace

FileReader::FileReader(std::filesystem::path path, const access::FileState& state,
                       ReadLocking locking)
    : path_(std::move(path)), state_(state), locking_(locking) {}

std::unique_ptr<access::ReadLock> FileReader::Lock() const {
  if (locking_ == ReadLocking::kNone) return nullptr;
  return access::ReadLock::TakeWherePossible(path_, kWaitForWriters);
}

const access::DatabaseFile& FileReader::File() {
  if (file_ == nullptr) {
    file_ = access::DatabaseFile::Open(path_);
    ++opened_;
  }
  return *file_;
}

const access::DatabaseFile& FileReader::OpenIn(const access::FileState& state) {
  // The catalogue and the definitions of the open file are those of its state.
  if (state != state_) {
    file_.reset();
    state_ = state;
  }
  return File();
}

void FileReader::BeginStep() {
  if (within_step_) return;
  step_lock_ = Lock();
  OpenIn(Now());
  within_step_ = true;
}

void FileReader::EndStep() {
  step_lock_.reset();
  within_step_ = false;
}

}  // namespace tenora::query
