// A real SMTP server on loopback, as a process of its own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/test_files.h"

namespace tenora::test {

// Key and certificate of a throw-away authority, for the name "localhost".
struct Certificate {
  std::filesystem::path certificate, key;
};
Certificate MakeCertificate(const std::filesystem::path& folder);

class SmtpServer {
 public:
  // Mode and options as smtp_server.py takes them, or faulty_smtp_server.py ("hangup-MAIL");
  // returns when the server listens.
  explicit SmtpServer(const std::string& mode, const std::vector<std::string>& options = {});
  ~SmtpServer();
  SmtpServer(const SmtpServer&) = delete;
  SmtpServer& operator=(const SmtpServer&) = delete;

  int port() const { return port_; }
  // The messages taken so far, as they arrived; and one line each for sender and recipients.
  std::vector<std::string> Messages() const;
  std::string Envelope(int number) const;
  int Connections() const;
  std::filesystem::path MessageFile(int number) const;

 private:
  ScratchFolder folder_;
  pid_t process_ = -1;
  int input_ = -1;
  int port_ = 0;
};

// What Python's mail parser makes of a message file: one "header: value" line each for from, to,
// subject, date and message-id, then per part "type | file name | content id" and its decoded
// content.
std::string ParseMessage(const std::filesystem::path& file);

}  // namespace tenora::test
