#include "platform/mail/mail_client.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <thread>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

constexpr const char* kBodyName = "message-";
constexpr std::chrono::hours kKeepBodies(7 * 24);
// xdg-open ends at once or, on plain desktops, with the program it has started. One that finds no
// program needs well under this.
constexpr std::chrono::seconds kWatchStart(5);
constexpr const char* kWhatToDo =
    ". Install Thunderbird, or choose a mail program in the desktop's settings, or switch on "
    "sending by SMTP in the rental package's options";

std::optional<std::string> FindProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  for (const std::string& folder : Split(path != nullptr ? path : "", ":")) {
    if (folder.empty()) continue;
    const std::string candidate = folder + "/" + name;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(candidate, ignored) &&
        ::access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
  }
  return std::nullopt;
}

// In a forked process: becomes the program, or sends errno down the pipe.
[[noreturn]] void BecomeDetached(const char* program, char* const* argv, int report) {
  ::setsid();
  const int null = ::open("/dev/null", O_RDWR);
  for (const int fd : {0, 1, 2}) ::dup2(null, fd);
  ::execv(program, argv);
  const int reason = errno;
  static_cast<void>(!::write(report, &reason, sizeof reason));
  ::_exit(127);
}

// The status with which the process ended soon after its start; nothing when it goes on.
std::optional<int> EarlyStatus(pid_t process) {
  const int handle = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
  pollfd ended{handle, POLLIN, 0};
  const auto deadline = std::chrono::steady_clock::now() + kWatchStart;
  int found = 0;
  do {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    found = handle < 0 ? 0 : ::poll(&ended, 1, std::max(0, static_cast<int>(left.count())));
  } while (found < 0 && errno == EINTR);
  if (handle >= 0) ::close(handle);
  if (found <= 0) {
    // Somebody has to take note of its end, whenever that is.
    std::thread([process] { ::waitpid(process, nullptr, 0); }).detach();
    return std::nullopt;
  }
  int status = 0;
  ::waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Starts a program that outlives this one. Raises NoMailClient when it fails at once.
void StartDetached(const std::string& program, std::vector<std::string> arguments) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  // A successful exec closes the pipe.
  std::array<int, 2> report{};
  if (::pipe2(report.data(), O_CLOEXEC) != 0) throw FileError(errno, program);
  const pid_t child = ::fork();
  if (child == 0) BecomeDetached(program.c_str(), argv.data(), report[1]);
  int reason = child < 0 ? errno : 0;
  ::close(report[1]);
  if (child > 0 && ::read(report[0], &reason, sizeof reason) <= 0) reason = 0;
  ::close(report[0]);
  if (reason != 0) {
    if (child > 0) ::waitpid(child, nullptr, 0);
    throw FileError(reason, program);
  }
  const int status = EarlyStatus(child).value_or(0);
  if (status != 0) {
    throw NoMailClient(program + " could not open the message (status " + std::to_string(status) +
                       ")");
  }
}

// A value of Thunderbird's compose argument: percent escapes, so that no comma or quote
// in a subject can start another field.
std::string PercentEncoded(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '.' ||
                       c == '-' || c == '_' || c == '/';
    if (plain) {
      result += c;
    } else {
      std::array<char, 4> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned char>(c));
      result += escaped.data();
    }
  }
  return result;
}

std::string BareRecipients(const Message& message) {
  std::string list;
  for (const Address& address : message.to) list += (list.empty() ? "" : ",") + address.address;
  return list;
}

// Letters are private: the folder must be ours and closed to other users.
void MakePrivateFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder.parent_path(), error);
  if (error) throw FileError(error.value(), folder);
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) throw FileError(errno, folder);
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) throw FileError(std::filesystem::is_symlink(folder) ? ELOOP : errno, folder);
  struct stat status {};
  int reason = ::fstat(fd, &status) == 0 ? 0 : errno;
  if (reason == 0 && status.st_uid != ::geteuid()) reason = EACCES;
  if (reason == 0 && (status.st_mode & 0777) != 0700 && ::fchmod(fd, 0700) != 0) reason = errno;
  ::close(fd);
  if (reason != 0) throw FileError(reason, folder);
}

// Deletes bodies too old for a compose window to read.
void RemoveOldBodies(const std::filesystem::path& folder) {
  const auto oldest = std::filesystem::file_time_type::clock::now() - kKeepBodies;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(kBodyName) &&
        entry->last_write_time(ignored) < oldest) {
      std::filesystem::remove(entry->path(), ignored);
    }
  }
}

std::filesystem::path WriteBody(const std::filesystem::path& folder, const std::string& extension,
                                const std::string& content) {
  MakePrivateFolder(folder);
  RemoveOldBodies(folder);
  for (std::random_device random;;) {
    const std::filesystem::path path =
        folder / (kBodyName + std::to_string(random()) + std::to_string(random()) + extension);
    if (WriteNewFile(path, content)) return path;
  }
}

// The draft is marked unsent, so that mail programs open it for writing.
std::string DraftFile(const Message& message) {
  std::string draft = "X-Unsent: 1\r\n";
  for (const std::string& line : HeaderLines(message)) {
    if (!line.starts_with("From: ") || !message.from.address.empty()) draft += line + "\r\n";
  }
  draft += "MIME-Version: 1.0\r\nContent-Type: text/html; charset=UTF-8\r\n";
  draft += "Content-Transfer-Encoding: 8bit\r\n\r\n";
  return draft + message.html;
}

}  // namespace

NoMailClient::NoMailClient(const std::string& reason) : RuntimeError(kNumber, reason + kWhatToDo) {}

void ComposeInMailClient(const Message& message, const std::filesystem::path& scratch_folder) {
  if (const auto thunderbird = FindProgram("thunderbird")) {
    const std::filesystem::path body = WriteBody(scratch_folder, ".html", message.html);
    StartDetached(*thunderbird,
                  {"-compose", "to=" + PercentEncoded(BareRecipients(message)) +
                                   ",subject=" + PercentEncoded(message.subject) +
                                   ",format=html,message=" + PercentEncoded(body.string())});
  } else if (const auto opener = FindProgram("xdg-open")) {
    StartDetached(*opener, {WriteBody(scratch_folder, ".eml", DraftFile(message)).string()});
  } else {
    throw NoMailClient("Neither thunderbird nor xdg-open was found on the path");
  }
}

}  // namespace tenora::mail
