// Sends one message to one recipient: by SMTP, or through the desktop's mail program, as the option
// SmtpSend says. There is no fallback from one transport to the other; mail::SmtpClient says when a
// message is tried a second time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/mail/message.h"
#include "platform/mail/smtp_client.h"
#include "platform/runtime/clock.h"
#include "rental/session.h"

namespace tenora {

// What a letter becomes in an e-mail.
struct EmailBody {
  std::string body;        // HTML or plain text, as isHtml says; pictures as "cid:…"
  std::string plain_text;  // what readers without HTML see
  std::vector<mail::Part> pictures;
  std::vector<mail::Part> attachments;
};

// Whether the mail server needs a login whose password the options keep from this program: on a
// server only the role "worker" may read it.
bool MailPasswordIsWithheld(Session& session);
// Raises 70 (Permission denied) with the reason where it is.
void RequireMailPassword(Session& session);

class clsEmailSender {
 public:
  explicit clsEmailSender(Session& session) : clsEmailSender(session, session.platform.clock) {}
  // Where the session's clock stands still, messages are of the time that this one shows.
  clsEmailSender(Session& session, const Clock& clock) : session_(session), clock_(clock) {}

  // The recipient may be several addresses split by ";" or ",". A failure is shown and gives false.
  bool DeliverEmail(const std::string& recipient, const EmailBody& body, const std::string& subject,
                    bool isHtml);

  // The same for a batch, which records failures letter by letter: every error is raised, as
  // mail::DeliveryUnknown if the message may have arrived nevertheless.
  void DeliverOrRaise(const std::string& recipient, const EmailBody& body,
                      const std::string& subject, bool isHtml);

  // Opens the mail program's compose window; nothing is sent. The body is always taken as HTML.
  bool SendEmailOutlook(const std::string& recipient, const EmailBody& body,
                        const std::string& subject);
  // Sends at once; not without the mail server's password. Messages of one sender share a
  // connection.
  bool SendEmailSMTP(const std::string& recipient, const EmailBody& body,
                     const std::string& subject, bool isHtml);

  // Polled during an SMTP exchange; true aborts the message. May be empty.
  std::function<bool()> StopAsked;

 private:
  void Compose(const std::string& recipient, const EmailBody& body, const std::string& subject);
  void SendBySmtp(const std::string& recipient, const EmailBody& body, const std::string& subject,
                  bool isHtml);
  mail::Server Server() const;
  mail::Address Sender() const;

  Session& session_;
  const Clock& clock_;
  mail::SmtpClient smtp_;
};

}  // namespace tenora
