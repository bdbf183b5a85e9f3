#include "output/email_sender.h"

#include <filesystem>
#include <utility>

#include "output/html/html_characters.h"
#include "platform/access/engine_error.h"
#include "platform/dialogs/guard.h"
#include "platform/mail/mail_client.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"
#include "platform/runtime/user_folders.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

// The compose window reads one file, which names no character set: its pictures are embedded in the
// HTML, its characters beyond ASCII references.
std::string SelfContained(const EmailBody& body) {
  std::string html = html::WithReferences(body.body);
  for (const mail::Part& picture : body.pictures) {
    html = ReplaceAll(std::move(html), "<img src=\"cid:" + picture.content_id + "\"",
                      "<img src=\"data:" + picture.content_type + ";base64," +
                          mail::Base64(picture.bytes) + "\"");
  }
  return html;
}

std::string NoMailClientText(const mail::NoMailClient& error) {
  return "Unable to send an email.  You do not have Microsoft Outlook correctly installed.  "
         "(Note - Microsoft Outlook Express is not supported)\r\n" +
         std::string(error.description());
}

// Bodies handed to the mail program, which may read them after this process has ended.
std::filesystem::path DraftFolder() { return UserFolder("XDG_CACHE_HOME", ".cache") / "Tenora"; }

}  // namespace

bool MailPasswordIsWithheld(Session& session) {
  const Options& options = session.options;
  const std::filesystem::path& database = session.database.LastOpened();
  if (!options.SmtpSend || options.SmtpUsername.empty() || !options.SmtpPassword.empty() ||
      !server::IsBranchLocation(database.string())) {
    return false;
  }
  try {
    session.platform.workspace.OpenDatabase(database)->OpenRecordset(
        "select SmtpPassword from options", query::kForwardOnly, query::kReadOnly);
  } catch (const RuntimeError& error) {
    return error.number() == access::engine_error::kNoReadPermission;
  }
  return false;
}

void RequireMailPassword(Session& session) {
  if (!MailPasswordIsWithheld(session)) return;
  throw StandardError(error_number::kPermissionDenied,
                      "the mail server needs a password, and this login may not read it on the "
                      "database server; one with the role worker may");
}

bool clsEmailSender::DeliverEmail(const std::string& recipient, const EmailBody& body,
                                  const std::string& subject, bool isHtml) {
  if (session_.options.SmtpSend) return SendEmailSMTP(recipient, body, subject, isHtml);
  return SendEmailOutlook(recipient, body, subject);
}

void clsEmailSender::DeliverOrRaise(const std::string& recipient, const EmailBody& body,
                                    const std::string& subject, bool isHtml) {
  if (session_.options.SmtpSend) return SendBySmtp(recipient, body, subject, isHtml);
  try {
    Compose(recipient, body, subject);
  } catch (const mail::NoMailClient& error) {
    throw RuntimeError(error.number(), NoMailClientText(error));
  }
}

void clsEmailSender::Compose(const std::string& recipient, const EmailBody& body,
                             const std::string& subject) {
  mail::Message message;
  message.to = mail::ParseAddresses(recipient);
  message.subject = subject;
  message.html = SelfContained(body);
  message.date = clock_.Now();
  mail::ComposeInMailClient(message, DraftFolder());
}

bool clsEmailSender::SendEmailOutlook(const std::string& recipient, const EmailBody& body,
                                      const std::string& subject) {
  Dialogs& dialogs = session_.platform.dialogs;
  try {
    Compose(recipient, body, subject);
    return true;
  } catch (const mail::NoMailClient& error) {
    dialogs.Say(NoMailClientText(error));
  } catch (const RuntimeError& error) {
    dialogs.Say(ErrorText(error));
  }
  return false;
}

mail::Server clsEmailSender::Server() const {
  const Options& options = session_.options;
  mail::Server server;
  server.host = options.SmtpAddress;
  // Ports above 32767 are negative numbers in the 16-bit option.
  server.port = static_cast<std::uint16_t>(options.SmtpPort);
  server.ssl = options.SmtpSSL;
  server.user = options.SmtpUsername;
  server.password = options.SmtpPassword;
  server.stop_asked = StopAsked;
  return server;
}

mail::Address clsEmailSender::Sender() const {
  try {
    return mail::ParseAddresses(session_.options.SmtpSender).front();
  } catch (const RuntimeError& error) {
    throw RuntimeError(error.number(),
                       "The option SmtpSender: " + std::string(error.description()));
  }
}

void clsEmailSender::SendBySmtp(const std::string& recipient, const EmailBody& body,
                                const std::string& subject, bool isHtml) {
  RequireMailPassword(session_);
  mail::Message message;
  message.from = Sender();
  message.to = mail::ParseAddresses(recipient);
  message.subject = subject;
  message.text = isHtml ? body.plain_text : body.body;
  if (isHtml) message.html = body.body;
  message.inline_parts = body.pictures;
  message.attachments = body.attachments;
  message.date = clock_.Now();
  smtp_.Send(Server(), message);
}

bool clsEmailSender::SendEmailSMTP(const std::string& recipient, const EmailBody& body,
                                   const std::string& subject, bool isHtml) {
  try {
    SendBySmtp(recipient, body, subject, isHtml);
    return true;
  } catch (const RuntimeError& error) {
    session_.platform.dialogs.Say(ErrorText(error));
    return false;
  }
}

}  // namespace tenora
