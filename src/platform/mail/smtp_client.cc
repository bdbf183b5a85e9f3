#include "platform/mail/smtp_client.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/mail/mime_text.h"
#include "platform/mail/smtp_connection.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

constexpr int kServiceEnds = 421;
// A stop behind the final "." leaves the message in doubt, and most replies come within this time.
constexpr std::chrono::seconds kPatienceAtEnd{30};

// How far a message has come.
enum class Stage { kConnecting, kSender, kRecipients, kText, kEndSent };

std::string Recipients(const Message& message) {
  std::string names;
  for (const Address& address : message.to) names += (names.empty() ? "" : ", ") + address.address;
  return names;
}

// Some servers quote the line they refuse.
std::string WithoutSecrets(std::string text, const Server& server) {
  if (server.password.empty()) return text;
  const std::string plain = std::string(1, '\0') + server.user + '\0' + server.password;
  for (const std::string& secret :
       {Base64(plain), Base64(server.user + plain), Base64(server.password), server.password}) {
    text = ReplaceAll(std::move(text), secret, "***");
  }
  return text;
}

std::string_view Summary(int number) {
  switch (number) {
    case smtp_error::kCannotConnect:
      return "The transport failed to connect to the server.";
    case smtp_error::kLoginRefused:
      return "The mail server refused the login.";
    case smtp_error::kCertificate:
      return "The mail server's certificate could not be verified.";
    case smtp_error::kRecipientRefused:
      return "The server rejected one or more recipient addresses.";
    case smtp_error::kSenderRefused:
      return "The server rejected the sender address.";
    case error_number::kCancelled:
      return "Cancel was selected.";
    default:
      return "The message could not be sent to the SMTP server.";
  }
}

// `about` names the message in errors.
[[noreturn]] void Raise(const SmtpProblem& problem, Stage stage, const Server& server,
                        const std::string& about) {
  const bool refused = problem.answer().Refuses();
  int number = problem.number();
  const bool broke_in = stage == Stage::kText && refused && problem.answer().code != kServiceEnds;
  if (number == smtp_error::kCannotConnect && (stage == Stage::kEndSent || broke_in)) {
    number = smtp_error::kNotSent;
  }
  std::string text(Summary(number));
  text += " Server " + server.host + ":" + std::to_string(server.port) + about;
  if (number != error_number::kCancelled) text.append(": ").append(problem.what());
  if (problem.answer().code != 0) {
    text += " (" + WithoutSecrets(problem.answer().text, server) + ")";
  }
  if (stage == Stage::kEndSent && !refused) throw DeliveryUnknown(number, text, "CDO.Message");
  throw RuntimeError(number, text, "CDO.Message");
}

// Raises for an answer that does not begin with the digit expected.
void Expect(int first_digit, const Reply& reply, int refused_number) {
  if (reply.code / 100 == first_digit) return;
  if (reply.code == kServiceEnds) {
    throw SmtpProblem(smtp_error::kCannotConnect, "the server ended the session", reply);
  }
  if (reply.Refuses()) throw SmtpProblem(refused_number, "refused", reply);
  throw SmtpProblem(smtp_error::kCannotConnect, "the server's answer is out of turn", reply);
}

// Lines that begin with a dot get another one, so that none is taken for the final ".".
std::string DotStuffed(const std::string& text) {
  std::string stuffed = ReplaceAll(text, "\r\n.", "\r\n..");
  if (!stuffed.ends_with("\r\n")) stuffed += "\r\n";
  return stuffed;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void Deliver(SmtpConnection& connection, const Server& server, const Message& message,
             Stage& stage) {
  const Waits& waits = server.waits;
  connection.set_stop_asked(server.stop_asked);
  bool ascii = IsAscii(message.from.address);
  for (const Address& address : message.to) ascii = ascii && IsAscii(address.address);
  const std::string text = DotStuffed(MimeText(message));

  stage = Stage::kSender;
  const char* utf8 = !ascii && connection.Offers("SMTPUTF8") ? " SMTPUTF8" : "";
  Expect(2, connection.Ask("MAIL FROM:<" + message.from.address + ">" + utf8, waits.sender),
         smtp_error::kSenderRefused);
  stage = Stage::kRecipients;
  for (const Address& address : message.to) {
    Expect(2, connection.Ask("RCPT TO:<" + address.address + ">", waits.recipient),
           smtp_error::kRecipientRefused);
  }
  Expect(3, connection.Ask("DATA", waits.data), smtp_error::kNotSent);
  stage = Stage::kText;
  connection.SendText(text, waits.block);
  connection.SendEnd(waits.block);
  stage = Stage::kEndSent;
  if (server.stop_asked) {
    connection.set_stop_asked([&server, end = std::chrono::steady_clock::now() + kPatienceAtEnd] {
      // Asked in any case: a window handles its events meanwhile.
      return server.stop_asked() && std::chrono::steady_clock::now() >= end;
    });
  }
  Expect(2, connection.ReadReply(waits.end), smtp_error::kNotSent);
}

bool WorthAFreshConnection(const SmtpProblem& problem, Stage stage, bool kept) {
  if (problem.number() != smtp_error::kCannotConnect || problem.timed_out()) return false;
  const bool ended_at_sender = stage == Stage::kSender && problem.answer().code == kServiceEnds;
  return ended_at_sender || (kept && stage < Stage::kText);
}

}  // namespace

SmtpClient::SmtpClient() = default;
SmtpClient::~SmtpClient() = default;

void SmtpClient::Send(const Server& server, const Message& message) {
  for (bool first = true;; first = false) {
    // Kept again only after success: after an error a late answer could still come, and would be
    // read as the next message's.
    std::unique_ptr<SmtpConnection> connection = std::exchange(kept_, nullptr);
    if (connection && !connection->IsTo(server)) connection.reset();
    const bool kept = connection != nullptr;
    Stage stage = Stage::kConnecting;
    try {
      if (!kept) connection = std::make_unique<SmtpConnection>(server);
      Deliver(*connection, server, message, stage);
      connection->set_stop_asked({});
      kept_ = std::move(connection);
      return;
    } catch (const SmtpProblem& problem) {
      if (!first || !WorthAFreshConnection(problem, stage, kept)) {
        Raise(problem, stage, server, ", message to " + Recipients(message));
      }
    }
  }
}

void SmtpClient::Check(const Server& server) {
  try {
    SmtpConnection connection(server);
  } catch (const SmtpProblem& problem) {
    Raise(problem, Stage::kConnecting, server, ", connection test");
  }
}

}  // namespace tenora::mail
