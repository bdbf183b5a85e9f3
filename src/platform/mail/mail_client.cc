#include "platform/mail/mail_client.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

constexpr int kCannotCreateObject = 429;

std::optional<std::string> FindProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  for (const std::string& folder : Split(path != nullptr ? path : "", ":")) {
    if (folder.empty()) continue;
    const std::string candidate = folder + "/" + name;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::nullopt;
}

// Starts a program that outlives us; a second fork leaves nobody to wait for it.
void StartDetached(const std::string& program, std::vector<std::string> arguments) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const pid_t child = ::fork();
  if (child < 0) throw StandardError(error_number::kPathFileAccess, program);
  if (child == 0) {
    ::setsid();
    if (::fork() != 0) ::_exit(0);
    const int null = ::open("/dev/null", O_RDWR);
    for (const int fd : {0, 1, 2}) ::dup2(null, fd);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
}

// A value of Thunderbird's compose argument: it decodes percent escapes, so that no comma or quote
// of a subject can begin another field.
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

std::filesystem::path WriteBody(const std::filesystem::path& folder, const std::string& extension,
                                const std::string& content) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw FileError(error.value(), folder);
  for (int n = 1;; ++n) {
    const std::filesystem::path path = folder / ("message" + std::to_string(n) + extension);
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

NoMailClient::NoMailClient()
    : RuntimeError(kCannotCreateObject, "Neither thunderbird nor xdg-open was found on the path") {}

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
    throw NoMailClient();
  }
}

}  // namespace tenora::mail
