#include "letters/generate/run_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/format.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr off_t kLargestLog = off_t{1} << 30;

fs::path Resolved(const fs::path& path) {
  std::error_code unresolved;
  fs::path resolved = fs::canonical(path, unresolved);
  return unresolved ? path : resolved;
}

// Creates the first log of the series whose name is free and gives its descriptor.
int CreateLog(const fs::path& folder, const std::string& stem, fs::path* path) {
  for (int n = 0;; ++n) {
    *path = folder / (stem + (n == 0 ? "" : " (" + std::to_string(n) + ")") + ".log");
    const int fd = ::open(path->c_str(), O_RDWR | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0) return fd;
    if (errno != EEXIST) throw FileError(errno, *path);
  }
}

std::string ReadLog(int fd, const fs::path& path) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) throw FileError(errno, path);
  if (!S_ISREG(status.st_mode) || status.st_size > kLargestLog) {
    throw StandardError(error_number::kInvalidFileFormat, path.string() + " is not a run log");
  }
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count =
        ::pread(fd, text.data() + filled, text.size() - filled, static_cast<off_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError(errno, path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return text;
}

}  // namespace

RunLog::RunLog(const fs::path& data_folder, GenerationRequest request, const Clock& clock)
    : data_folder_(data_folder), clock_(clock) {
  const std::string stem = "Letters " + FormatDate(clock.Now(), "yyyy-mm-dd hhnnss");
  fd_ = CreateLog(data_folder, stem, &path_);
  try {
    Lock(false);
    run_.log_name = path_.filename();
    run_.data_folder = Resolved(data_folder);
    run_.request = std::move(request);
    run_.letters.resize(run_.request.recipients.size());
    noted_ = RunLogHead(run_, clock.Now());
    Sync();
    // The name too must survive a power cut, before any letter is handed over.
    SyncFiles(data_folder);
  } catch (...) {
    ::unlink(path_.c_str());
    ::close(fd_);
    throw;
  }
}

RunLog RunLog::Resume(const fs::path& path, const fs::path& data_folder, const Clock& clock) {
  RunLog log(Resolved(path), clock);
  log.data_folder_ = data_folder;
  log.Open();
  log.Lock(true);
  const std::size_t whole = log.Read();
  log.CheckOrigin(data_folder);
  if (::ftruncate(log.fd_, static_cast<off_t>(whole)) != 0) throw FileError(errno, path);
  log.Remark("resumed", "");
  log.Sync();
  return log;
}

GenerationRequest RunLog::RequestOf(const fs::path& path) {
  const Clock clock;
  RunLog log(Resolved(path), clock);
  log.Open();
  log.Read();
  return std::move(log.run_.request);
}

void RunLog::Open() {
  fd_ = ::open(path_.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd_ < 0) throw FileError(errno, path_);
}

std::size_t RunLog::Read() {
  const std::string text = ReadLog(fd_, path_);
  const std::size_t whole = WholeLines(text);
  try {
    // A first line cut short still shows whether this is a run log.
    run_ = ReadRunLog(std::string_view(text).substr(0, whole == 0 ? text.size() : whole));
  } catch (const RuntimeError& error) {
    throw RuntimeError(error.number(), path_.string() + ": " + std::string(error.description()));
  }
  return whole;
}

RunLog::RunLog(RunLog&& other) noexcept
    : path_(std::move(other.path_)),
      data_folder_(std::move(other.data_folder_)),
      clock_(other.clock_),
      fd_(std::exchange(other.fd_, -1)),
      run_(std::move(other.run_)),
      noted_(std::move(other.noted_)) {}

RunLog::~RunLog() {
  if (fd_ >= 0) ::close(fd_);
}

// A new log needs no lock, also where the file system has none; an old one may be in use.
void RunLog::Lock(bool required) {
  if (::flock(fd_, LOCK_EX | LOCK_NB) == 0 || !required) return;
  if (errno != EWOULDBLOCK) throw FileError(errno, path_);
  throw StandardError(error_number::kPermissionDenied,
                      path_.string() + " belongs to a run that is still in progress");
}

void RunLog::CheckOrigin(const fs::path& data_folder) const {
  const fs::path own = Resolved(data_folder);
  const auto refuse = [](const std::string& why) {
    throw StandardError(error_number::kInvalidFileFormat, why);
  };
  if (fs::path(run_.data_folder) != own) {
    refuse(path_.string() + " is the log of a run in the data folder " + run_.data_folder +
           "; this is " + own.string());
  }
  if (path_ != own / run_.log_name) {
    refuse(path_.string() + " is a copy of the run log " + run_.log_name +
           "; resume the original, which knows what was sent since");
  }
}

void RunLog::Note(std::size_t number, LetterState state, const std::string& detail,
                  const std::string& fingerprint) {
  LoggedLetter& letter = run_.letters[number - 1];
  letter.state = state;
  letter.detail = detail;
  letter.fingerprint = fingerprint;
  noted_ += RunLogLine(state, number, recipient(number).name, letter);
}

void RunLog::NoteFile(std::size_t number, const fs::path& file) {
  run_.letters[number - 1].file =
      file.empty() ? std::string() : file.lexically_relative(data_folder_).string();
}

void RunLog::Remark(std::string_view what, std::string_view text) {
  noted_ += RunLogRemark(what, text, clock_.Now());
}

// Lines that cannot be written stay pending, and no part of them stays in the file.
void RunLog::Write() {
  if (noted_.empty()) return;
  struct stat before {};
  if (::fstat(fd_, &before) != 0) throw FileError(errno, path_);
  for (std::size_t written = 0; written < noted_.size();) {
    const ssize_t count = ::write(fd_, noted_.data() + written, noted_.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const int reason = errno;
      static_cast<void>(::ftruncate(fd_, before.st_size));
      throw FileError(reason, path_);
    }
    written += static_cast<std::size_t>(count);
  }
  noted_.clear();
}

void RunLog::Sync() {
  Write();
  if (::fdatasync(fd_) != 0) throw FileError(errno, path_);
}

}  // namespace tenora
