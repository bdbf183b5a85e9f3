// Sends messages to an SMTP server. One client keeps its connection for the messages that follow.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/mail/message.h"
#include "platform/runtime/error.h"

namespace tenora::mail {

struct Server {
  std::string host;
  int port = 25;
  // Port 465: encrypted from the first byte; any other: STARTTLS, and nothing is sent without it.
  // Certificates are always verified, against the system's authorities.
  bool ssl = false;
  std::string user, password;  // both empty: no authentication
  int timeout_seconds = 60;    // to connect, and for each answer of the server
  // Asked about once a second and more often while data moves; true aborts the session,
  // which raises 32755 (Cancel was selected). May be empty.
  std::function<bool()> stop_asked;
};

namespace smtp_error {
inline constexpr int kCannotConnect = -2147220973;     // 0x80040213
inline constexpr int kLoginRefused = -2147220975;      // 0x80040211
inline constexpr int kCertificate = -2146885613;       // 0x80092013
inline constexpr int kRecipientRefused = -2147220977;  // 0x8004020F
inline constexpr int kSenderRefused = -2147220978;     // 0x8004020E
inline constexpr int kNotSent = -2147220974;           // 0x80040212
}  // namespace smtp_error

// A failure after which the server may have taken the message all the same: the connection broke
// while its text was being sent, before the server's final reply.
class DeliveryUnknown : public RuntimeError {
 public:
  using RuntimeError::RuntimeError;
};

class SmtpClient {
 public:
  SmtpClient();
  ~SmtpClient();
  SmtpClient(const SmtpClient&) = delete;
  SmtpClient& operator=(const SmtpClient&) = delete;

  // Returns when the server has accepted the message; raises one of the numbers above with server,
  // recipient and the server's own words in the description, as a DeliveryUnknown where it applies.
  // Never contains the password.
  void Send(const Server& server, const Message& message);

  // Connects and logs in without sending anything. Raises as Send does.
  void Check(const Server& server);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tenora::mail
