#include "support/smtp_server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "platform/runtime/files.h"

namespace tenora::test {
namespace {

constexpr const char* kPython = "/usr/bin/python3";

}  // namespace

Certificate MakeCertificate(const std::filesystem::path& folder) {
  const Certificate result{folder / "cert.pem", folder / "key.pem"};
  const ProcessResult made = RunProcess(
      {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
       "-nodes", "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
       "-keyout", result.key.string(), "-out", result.certificate.string()});
  if (made.status != 0) throw std::runtime_error(made.errors);
  return result;
}

SmtpServer::SmtpServer(const std::string& mode, const std::vector<std::string>& options) {
  const bool faulty = mode.find('-') != std::string::npos;
  const std::string script =
      (SourceDir() / "tests/support" / (faulty ? "faulty_smtp_server.py" : "smtp_server.py"))
          .string();
  std::vector<std::string> arguments{kPython, script, folder_.path().string(), mode};
  arguments.insert(arguments.end(), options.begin(), options.end());
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(ends[0], 0);
    ::dup2(::open((folder_ / "log").c_str(), O_WRONLY | O_CREAT, 0600), 2);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::execv(kPython, argv.data());
    ::_exit(127);
  }
  ::close(ends[0]);
  input_ = ends[1];
  // The port file appears when the server listens.
  const auto port_file = folder_ / "port";
  while (!std::filesystem::exists(port_file)) {
    int status = 0;
    if (::waitpid(process_, &status, WNOHANG) == process_) {
      process_ = -1;
      ::close(input_);
      throw std::runtime_error("the SMTP server did not start");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  port_ = std::stoi(ReadWholeFile(port_file));
}

SmtpServer::~SmtpServer() {
  ::close(input_);
  if (process_ > 0) {
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
  }
}

std::filesystem::path SmtpServer::MessageFile(int number) const {
  return folder_ / (std::to_string(number) + ".eml");
}

std::vector<std::string> SmtpServer::Messages() const {
  std::vector<std::string> messages;
  for (int n = 1; std::filesystem::exists(MessageFile(n)); ++n) {
    messages.push_back(ReadWholeFile(MessageFile(n)));
  }
  return messages;
}

std::string SmtpServer::Envelope(int number) const {
  return ReadWholeFile(folder_ / (std::to_string(number) + ".envelope"));
}

int SmtpServer::Connections() const {
  const std::string log = ReadWholeFile(folder_ / "connections");
  return static_cast<int>(std::count(log.begin(), log.end(), '\n'));
}

std::string ParseMessage(const std::filesystem::path& file) {
  const ProcessResult result =
      RunProcess({kPython, (SourceDir() / "tests/support/read_message.py").string(), file.string()},
                 {"PYTHONIOENCODING=utf-8"});
  if (result.status != 0) throw std::runtime_error(result.errors);
  return result.output;
}

}  // namespace tenora::test
