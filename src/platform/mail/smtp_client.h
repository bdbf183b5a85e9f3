// Sends messages to an SMTP server. One client keeps its connection for the messages that follow.
#pragma once

#include <memory>
#include <string>

#include "platform/mail/mail_server.h"
#include "platform/mail/message.h"
#include "platform/runtime/error.h"

namespace tenora::mail {

class SmtpConnection;

namespace smtp_error {
inline constexpr int kCannotConnect = -2147220973;     // 0x80040213
inline constexpr int kLoginRefused = -2147220975;      // 0x80040211
inline constexpr int kCertificate = -2146885613;       // 0x80092013
inline constexpr int kRecipientRefused = -2147220977;  // 0x8004020F
inline constexpr int kSenderRefused = -2147220978;     // 0x8004020E
inline constexpr int kNotSent = -2147220974;           // 0x80040212
}  // namespace smtp_error

// A failure after which the server may have taken the message all the same: the final "." of its
// text was sent, and the server's final reply did not come.
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
  // Never contains the password. kCannotConnect also stands for a connection that was cut or
  // ended by the server (421) before the message was complete. The message is tried a second time,
  // on a fresh connection, when the server ends the session at its sender, or when a connection
  // kept from an earlier message turns out to be cut or out of step.
  void Send(const Server& server, const Message& message);

  // Connects and logs in without sending anything. Raises as Send does.
  void Check(const Server& server);

 private:
  // Of the last message, when it was sent without any error; otherwise none.
  std::unique_ptr<SmtpConnection> kept_;
};

}  // namespace tenora::mail
