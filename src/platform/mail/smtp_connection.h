// One connection to a mail server: greeted, encrypted and logged in as the settings ask, then used
// command by command.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/mail/mail_server.h"

namespace tenora::mail {

// An SMTP reply of one or more lines.
struct Reply {
  int code = 0;      // three digits
  std::string text;  // code and words as one line, printable

  bool Refuses() const { return code >= 400 && code < 600; }
};

// Why a conversation ended. The connection is of no use after it.
class SmtpProblem : public std::runtime_error {
 public:
  SmtpProblem(int number, const std::string& what, Reply answer = {}, bool timed_out = false)
      : std::runtime_error(what),
        number_(number),
        answer_(std::move(answer)),
        timed_out_(timed_out) {}

  int number() const { return number_; }           // one of smtp_error, or kCancelled
  const Reply& answer() const { return answer_; }  // the server's words; code 0 for none
  bool timed_out() const { return timed_out_; }

 private:
  int number_;
  Reply answer_;
  bool timed_out_;
};

class SmtpConnection {
 public:
  // Connects, encrypts and logs in. Raises SmtpProblem.
  explicit SmtpConnection(const Server& server);
  // Takes leave of a server that owes no answer; waits for nothing.
  ~SmtpConnection();
  SmtpConnection(const SmtpConnection&) = delete;
  SmtpConnection& operator=(const SmtpConnection&) = delete;

  // Whether this connection was made to the same server with the same login.
  bool IsTo(const Server& server) const;
  // In place of the function of the server's settings at the start.
  void set_stop_asked(std::function<bool()> stop_asked);
  // Whether the server's answer to EHLO named this extension, in upper case.
  bool Offers(std::string_view extension) const;

  // Sends the line and reads its answer. Raises SmtpProblem when the connection breaks, the time is
  // over, or the server has said something before it was asked.
  Reply Ask(const std::string& command, std::chrono::milliseconds wait);
  // Sends the lines of a message, without the final ".". `wait` is for a byte to be taken.
  void SendText(std::string_view text, std::chrono::milliseconds wait);
  // Sends the final "."; afterwards the server may deliver the message.
  void SendEnd(std::chrono::milliseconds wait);
  Reply ReadReply(std::chrono::milliseconds wait);

 private:
  struct Transport;

  void Open();
  void Write(std::string_view bytes, std::chrono::milliseconds wait);
  bool Receive();
  void RequireSilence();
  void Await(short events, std::chrono::steady_clock::time_point deadline,
             std::chrono::milliseconds wait) const;
  void AskToStop() const;

  Server server_;
  std::unique_ptr<Transport> transport_;
  std::string input_;     // received, not yet read as a reply
  bool in_step_ = false;  // every command has had its answer
};

}  // namespace tenora::mail
