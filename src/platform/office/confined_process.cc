#include "platform/office/confined_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::office {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostOutput = std::size_t{64} << 10;
constexpr std::chrono::milliseconds kBetweenQuestions{100};

class Pipe {
 public:
  Pipe() {
    if (::pipe2(ends_.data(), O_CLOEXEC) != 0) throw FileError(errno, "pipe");
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    Close(0);
    Close(1);
  }
  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void CloseWriter() { Close(1); }

 private:
  void Close(std::size_t end) {
    if (ends_[end] >= 0) ::close(ends_[end]);
    ends_[end] = -1;
  }
  std::array<int, 2> ends_{-1, -1};
};

// All that the new process needs, made before the fork: after it, only system calls are safe in a
// program with threads.
struct Start {
  std::vector<std::string> words, settings;
  std::vector<char*> argv, environment;
  std::string folder, user_map, group_map;
  ProcessLimits limits;
  pid_t parent = ::getpid();

  Start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
        const std::filesystem::path& working_folder, const ProcessLimits& process_limits)
      : folder(working_folder.string()), limits(process_limits) {
    words.push_back(program.string());
    words.insert(words.end(), arguments.begin(), arguments.end());
    settings = {"PATH=/usr/local/bin:/usr/bin:/bin", "LC_ALL=C.UTF-8", "HOME=" + folder,
                "TMPDIR=" + folder};
    for (std::string& word : words) argv.push_back(word.data());
    for (std::string& setting : settings) environment.push_back(setting.data());
    argv.push_back(nullptr);
    environment.push_back(nullptr);
    const auto one_to_one = [](auto id) {
      return std::to_string(id) + " " + std::to_string(id) + " 1";
    };
    user_map = one_to_one(::getuid());
    group_map = one_to_one(::getgid());
  }
};

void WriteTo(const char* path, const char* text, std::size_t size) {
  const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
  if (fd < 0) return;
  static_cast<void>(!::write(fd, text, size));
  ::close(fd);
}

// A network of its own, which leads nowhere. Systems may forbid it; the program then runs without.
void LeaveNetwork(const Start& start) {
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return;
  WriteTo("/proc/self/setgroups", "deny", 4);
  WriteTo("/proc/self/uid_map", start.user_map.data(), start.user_map.size());
  WriteTo("/proc/self/gid_map", start.group_map.data(), start.group_map.size());
}

void Limit(int resource, std::uint64_t most) {
  const rlimit limit{most, most};
  ::setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

// In the forked process: becomes the program, or sends errno down the pipe.
[[noreturn]] void Become(const Start& start, int output, int report) {
  ::setsid();
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != start.parent) ::_exit(127);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  LeaveNetwork(start);
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_AS, start.limits.memory);
  Limit(RLIMIT_FSIZE, start.limits.file_size);
  Limit(RLIMIT_CPU, static_cast<std::uint64_t>(start.limits.time.count() / 1000 + 1));
  ::umask(077);
  const int null = ::open("/dev/null", O_RDONLY);
  ::dup2(null, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  if (::chdir(start.folder.c_str()) == 0) {
    ::execve(start.argv.front(), start.argv.data(), start.environment.data());
  }
  const int reason = errno;
  static_cast<void>(!::write(report, &reason, sizeof reason));
  ::_exit(127);
}

class Process {
 public:
  Process(const Start& start, const std::string& program) {
    Pipe report;
    process_ = ::fork();
    if (process_ == 0) Become(start, output_.writer(), report.writer());
    int reason = process_ < 0 ? errno : 0;
    output_.CloseWriter();
    report.CloseWriter();
    // A successful exec closes the pipe.
    if (process_ > 0 && ::read(report.reader(), &reason, sizeof reason) <= 0) reason = 0;
    if (reason == 0) return;
    if (process_ > 0) ::waitpid(process_, nullptr, 0);
    throw FileError(reason, program);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (!ended_) End();
  }

  ProcessResult Wait(std::chrono::milliseconds time, const std::function<bool()>& stopped) {
    ProcessResult result;
    const auto deadline = Clock::now() + time;
    while (!ended_) {
      TakeOutput(&result.output);
      if (TakeStatus(&result)) break;
      if (stopped && stopped()) {
        result.end = ProcessResult::End::kStopped;
        End();
      } else if (Clock::now() >= deadline) {
        result.end = ProcessResult::End::kTimedOut;
        End();
      }
    }
    TakeOutput(&result.output);
    return result;
  }

 private:
  // Waits for output, though not long.
  void TakeOutput(std::string* output) {
    pollfd ready{output_.reader(), POLLIN, 0};
    if (output_ended_) {
      if (!ended_) std::this_thread::sleep_for(kBetweenQuestions);
      return;
    }
    const int wait = ended_ ? 0 : static_cast<int>(kBetweenQuestions.count());
    if (::poll(&ready, 1, wait) <= 0) return;
    std::array<char, 4096> part;
    const ssize_t size = ::read(output_.reader(), part.data(), part.size());
    output_ended_ = size <= 0;
    if (size > 0) {
      output->append(part.data(),
                     std::min(static_cast<std::size_t>(size), kMostOutput - output->size()));
    }
  }

  bool TakeStatus(ProcessResult* result) {
    int status = 0;
    if (::waitpid(process_, &status, WNOHANG) != process_) return false;
    ended_ = true;
    KillSession();
    result->status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (WIFSIGNALED(status) && (WTERMSIG(status) == SIGXCPU || WTERMSIG(status) == SIGXFSZ)) {
      result->end = ProcessResult::End::kKilledByLimit;
    }
    return true;
  }

  void End() {
    ended_ = true;
    KillSession();
    ::waitpid(process_, nullptr, 0);
  }

  // Its own children are in its process group, where no terminal has moved them.
  void KillSession() const { ::kill(-process_, SIGKILL); }

  Pipe output_;
  pid_t process_ = -1;
  bool ended_ = false, output_ended_ = false;
};

}  // namespace

ProcessResult RunConfined(const std::filesystem::path& program,
                          const std::vector<std::string>& arguments,
                          const std::filesystem::path& folder, const ProcessLimits& limits,
                          const std::function<bool()>& stopped) {
  const Start start(program, arguments, folder, limits);
  return Process(start, program.string()).Wait(limits.time, stopped);
}

}  // namespace tenora::office
