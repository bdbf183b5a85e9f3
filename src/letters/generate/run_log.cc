#include "letters/generate/run_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/format.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr off_t kLargestLog = off_t{1} << 30;
constexpr std::size_t kLongestRemark = 256;
// Holds the template, which stands behind two paths.
constexpr std::size_t kLongestBeginning = 16384;

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

// A negative `from` counts from the end.
std::string ReadLog(int fd, const fs::path& path, off_t from = 0,
                    std::size_t most = std::string::npos) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) throw FileError(errno, path);
  if (!S_ISREG(status.st_mode) || status.st_size > kLargestLog) {
    throw StandardError(error_number::kInvalidFileFormat, path.string() + " is not a run log");
  }
  from = from < 0 ? std::max<off_t>(0, status.st_size + from) : std::min(from, status.st_size);
  std::string text(std::min(most, static_cast<std::size_t>(status.st_size - from)), '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count =
        ::pread(fd, text.data() + filled, text.size() - filled, from + static_cast<off_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError(errno, path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return text;
}

bool MayBeRunLog(const fs::directory_entry& entry) {
  std::error_code unknown;
  return entry.path().extension() == ".log" &&
         entry.path().filename().string().starts_with(kRunLogPrefix) &&
         fs::is_regular_file(entry.symlink_status(unknown));
}

}  // namespace

std::vector<fs::path> RunLogsIn(const fs::path& data_folder) {
  std::vector<fs::path> logs;
  std::error_code unlisted;
  fs::directory_iterator entry(data_folder, unlisted);
  for (; !unlisted && entry != fs::directory_iterator(); entry.increment(unlisted)) {
    if (MayBeRunLog(*entry)) logs.push_back(entry->path());
  }
  std::ranges::sort(logs);
  return logs;
}

RunLog::RunLog(const fs::path& data_folder, GenerationRequest request, const Clock& clock)
    : RunLedger(data_folder), clock_(clock) {
  const std::string stem =
      std::string(kRunLogPrefix) + FormatDate(clock.Now(), "yyyy-mm-dd hhnnss");
  fd_ = CreateLog(data_folder, stem, &path_);
  try {
    LockNew();
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
  RunLog log(Resolved(path), data_folder, clock);
  log.Open();
  log.LockForChange();
  const std::size_t whole = log.Read();
  log.CheckOrigin(data_folder);
  if (::ftruncate(log.fd_, static_cast<off_t>(whole)) != 0) throw FileError(errno, path);
  return log;
}

LoggedRun RunLog::Contents(const fs::path& path) {
  const Clock clock;
  RunLog log(Resolved(path), fs::path(), clock);
  log.Open();
  log.Read();
  return std::move(log.run_);
}

std::optional<LoggedRun> RunLog::Look(const fs::path& path, const fs::path& data_folder) {
  const Clock clock;
  RunLog log(Resolved(path), fs::path(), clock);
  log.Open();
  if (!log.LockOld(LOCK_SH)) return std::nullopt;
  if (!BeginsRunLog(ReadLog(log.fd_, log.path_, 0, kLongestRemark))) return std::nullopt;
  if (EndsSettled(ReadLog(log.fd_, log.path_, -off_t{kLongestRemark}))) return std::nullopt;
  log.Read();
  log.CheckOrigin(data_folder);
  return std::move(log.run_);
}

std::optional<LoggedRun> RunLog::History(const fs::path& path, std::string_view template_kind,
                                         std::string_view template_name) {
  const Clock clock;
  RunLog log(path, fs::path(), clock);
  log.fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (log.fd_ < 0) return std::nullopt;
  try {
    const std::string beginning = ReadLog(log.fd_, path, 0, kLongestBeginning);
    if (!BeginsRunLog(beginning) || !IsRunOf(beginning, template_kind, template_name)) {
      return std::nullopt;
    }
    log.Read();
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
  return std::move(log.run_);
}

// Most logs do not hold it: searching them is far quicker than reading what they say.
std::optional<LoggedRun> RunLog::Holding(const fs::path& path, std::string_view text) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return std::nullopt;
  const Clock clock;
  RunLog log(path, fs::path(), clock);
  log.fd_ = fd;
  try {
    const std::string all = ReadLog(fd, path);
    if (::memmem(all.data(), all.size(), text.data(), text.size()) == nullptr) return std::nullopt;
    log.Read();
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
  return std::move(log.run_);
}

void RunLog::Forget(const fs::path& path, const Clock& clock) {
  RunLog log(Resolved(path), fs::path(), clock);
  log.Open();
  log.LockForChange();
  const std::string text = ReadLog(log.fd_, log.path_);
  if (!BeginsRunLog(text)) {
    throw StandardError(error_number::kInvalidFileFormat, path.string() + " is not a run log");
  }
  if (::ftruncate(log.fd_, static_cast<off_t>(WholeLines(text))) != 0) {
    throw FileError(errno, path);
  }
  log.Note(RunRemark::kForgotten);
  log.Sync();
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
    : RunLedger(static_cast<RunLedger&&>(other)),
      path_(std::move(other.path_)),
      clock_(other.clock_),
      fd_(std::exchange(other.fd_, -1)),
      noted_(std::move(other.noted_)) {}

RunLog::~RunLog() {
  if (fd_ >= 0) ::close(fd_);
}

// Waits for whoever looks at the log before it has a head, which takes no time. Where the file
// system has no locks, a new log does without.
void RunLog::LockNew() {
  while (::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

bool RunLog::LockOld(int kind) {
  if (::flock(fd_, kind | LOCK_NB) == 0) return true;
  if (errno != EWOULDBLOCK) throw FileError(errno, path_);
  return false;
}

void RunLog::LockForChange() {
  if (LockOld(LOCK_EX)) return;
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

void RunLog::LetterNoted(std::size_t number) {
  const LoggedLetter& noted = letter(number);
  noted_ += RunLogLine(noted.state, number, recipient(number).name, noted);
}

void RunLog::AnswerNoted(const std::string& prompt, const std::string& answer) {
  noted_ += RunLogAnswer(prompt, answer);
}

void RunLog::Note(RunRemark remark) { noted_ += RunLogRemark(remark, clock_.Now()); }

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

void RunLog::Close(RunRemark remark) {
  Note(remark);
  Sync();
}

}  // namespace tenora
