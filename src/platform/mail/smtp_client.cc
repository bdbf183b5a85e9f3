#include "platform/mail/smtp_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

constexpr std::size_t kLongestRefusal = 500;

template <typename T, void (*Free)(T*)>
struct Freed {
  void operator()(T* pointer) const { Free(pointer); }
};
using ListPtr = std::unique_ptr<curl_slist, Freed<curl_slist, curl_slist_free_all>>;
using MimePtr = std::unique_ptr<curl_mime, Freed<curl_mime, curl_mime_free>>;
using UrlPtr = std::unique_ptr<CURLU, Freed<CURLU, curl_url_cleanup>>;

void Append(ListPtr& list, const std::string& line) {
  curl_slist* longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  static_cast<void>(list.release());
  list.reset(longer);
}

void SetHeader(curl_mimepart* part, const std::string& line) {
  ListPtr headers;
  Append(headers, line);
  curl_mime_headers(part, headers.release(), 1);
}

void AddText(curl_mime* mime, const std::string& text, const char* type) {
  curl_mimepart* part = curl_mime_addpart(mime);
  // Quoted-printable keeps line ends as they are; the standard's are CR LF.
  const std::string lines = ReplaceAll(ReplaceAll(text, "\r\n", "\n"), "\n", "\r\n");
  curl_mime_data(part, lines.data(), lines.size());
  curl_mime_type(part, type);
  curl_mime_encoder(part, "quoted-printable");
  SetHeader(part, "Content-Disposition: inline");
}

void AddFile(curl_mime* mime, const Part& file, const char* disposition) {
  curl_mimepart* part = curl_mime_addpart(mime);
  curl_mime_data(part, file.bytes.data(), file.bytes.size());
  curl_mime_type(part, file.content_type.c_str());
  curl_mime_encoder(part, "base64");
  ListPtr headers;
  std::string name;
  for (const char c : file.file_name) {
    std::array<char, 4> escaped{};
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '.' ||
                       c == '-' || c == '_';
    if (plain) {
      name += c;
    } else {
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned char>(c));
      name += escaped.data();
    }
  }
  Append(headers,
         std::string("Content-Disposition: ") + disposition + "; filename*=UTF-8''" + name);
  if (!file.content_id.empty()) Append(headers, "Content-ID: <" + file.content_id + ">");
  curl_mime_headers(part, headers.release(), 1);
}

// A new multipart of this kind inside `parent`.
curl_mime* AddMultipart(CURL* curl, curl_mime* parent, const char* type) {
  MimePtr mime(curl_mime_init(curl));
  curl_mimepart* part = curl_mime_addpart(parent);
  curl_mime* raw = mime.get();
  curl_mime_subparts(part, mime.release());
  curl_mime_type(part, type);
  SetHeader(part, "Content-Disposition: inline");
  return raw;
}

// The type of the outermost part: an alternative of text and HTML, unless there are attachments.
const char* BodyType(const Message& message) {
  const bool alternative = !message.html.empty() && message.attachments.empty();
  return alternative ? "multipart/alternative" : "multipart/mixed";
}

// mixed { alternative { text, related { html, pictures } }, attachments }, each level only where it
// is not empty.
MimePtr BuildBody(CURL* curl, const Message& message) {
  MimePtr body(curl_mime_init(curl));
  if (message.html.empty()) {
    AddText(body.get(), message.text, "text/plain; charset=UTF-8");
  } else {
    curl_mime* alternative = message.attachments.empty()
                                 ? body.get()
                                 : AddMultipart(curl, body.get(), "multipart/alternative");
    AddText(alternative, message.text, "text/plain; charset=UTF-8");
    curl_mime* html_parent = message.inline_parts.empty()
                                 ? alternative
                                 : AddMultipart(curl, alternative, "multipart/related");
    AddText(html_parent, message.html, "text/html; charset=UTF-8");
    for (const Part& picture : message.inline_parts) AddFile(html_parent, picture, "inline");
  }
  for (const Part& file : message.attachments) AddFile(body.get(), file, "attachment");
  return body;
}

std::string ServerUrl(const Server& server) {
  const UrlPtr url(curl_url());
  const bool implicit_tls = server.ssl && server.port == 465;
  const std::string port = std::to_string(server.port);
  const bool valid =
      !server.host.empty() && server.port > 0 &&
      curl_url_set(url.get(), CURLUPART_SCHEME, implicit_tls ? "smtps" : "smtp", 0) == CURLUE_OK &&
      curl_url_set(url.get(), CURLUPART_HOST, server.host.c_str(), 0) == CURLUE_OK &&
      curl_url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) == CURLUE_OK;
  char* text = nullptr;
  if (!valid || curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
    throw RuntimeError(smtp_error::kCannotConnect,
                       "'" + server.host + ":" + port + "' is not the address of a mail server");
  }
  std::string result = text;
  curl_free(text);
  return result;
}

std::string Recipients(const Message& message) {
  std::string names;
  for (const Address& address : message.to) names += (names.empty() ? "" : ", ") + address.address;
  return names;
}

// The command that the server answered with a refusal, and that answer, for the error text.
struct Conversation {
  std::string command;
  std::string refused_command;
  std::string refusal;          // of several lines, joined
  bool text_asked_for = false;  // the server's "354" to DATA
  bool refusal_open = false;
};

// A server's reply for display: what is not printable UTF-8 is replaced.
std::string Printable(std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const char32_t c = TakeCodePoint(line);
    AppendUtf8(text, c < 0x20 || (c >= 0x7F && c < 0xA0) ? U' ' : c);
  }
  return text;
}

void NoteAnswer(Conversation& conversation, std::string_view line) {
  if (line.starts_with("354")) {
    conversation.text_asked_for = true;
    // From a login method that failed before another was tried.
    conversation.refusal.clear();
  }
  if (!line.starts_with('4') && !line.starts_with('5')) return;
  // "550-first line", "550 last line".
  const bool goes_on = conversation.refusal_open;
  conversation.refusal_open = line.size() > 3 && line[3] == '-';
  if (!goes_on) conversation.refusal = line.substr(0, 3);
  conversation.refused_command = conversation.command;
  if (conversation.refusal.size() > kLongestRefusal) return;
  line.remove_prefix(std::min<std::size_t>(line.size(), 4));
  conversation.refusal += ' ' + Printable(line.substr(0, kLongestRefusal));
}

int Watch(CURL*, curl_infotype type, char* data, std::size_t size, void* user) {
  auto& conversation = *static_cast<Conversation*>(user);
  std::string_view line(data, size);
  line = line.substr(0, line.find_last_not_of("\r\n") + 1);
  // Only the command word is kept: what follows AUTH would hold the password.
  if (type == CURLINFO_HEADER_OUT) conversation.command = line.substr(0, line.find(' '));
  if (type == CURLINFO_HEADER_IN) NoteAnswer(conversation, line);
  return 0;
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

// A result other than 0 aborts the transfer.
int AskToStop(void* server, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const Server*>(server)->stop_asked() ? 1 : 0;
}

int ErrorNumber(CURLcode code, const Conversation& conversation) {
  // A timeout after the text was sent is not a failure to connect.
  if (conversation.text_asked_for && code == CURLE_OPERATION_TIMEDOUT) return smtp_error::kNotSent;
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_USE_SSL_FAILED:
      return smtp_error::kCannotConnect;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
      return smtp_error::kCertificate;
    case CURLE_LOGIN_DENIED:
      return smtp_error::kLoginRefused;
    case CURLE_ABORTED_BY_CALLBACK:
      return error_number::kCancelled;
    default:
      break;
  }
  if (conversation.refused_command == "RCPT") return smtp_error::kRecipientRefused;
  if (conversation.refused_command == "MAIL") return smtp_error::kSenderRefused;
  return smtp_error::kNotSent;
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

void SetServer(CURL* curl, const Server& server) {
  // Resets the options only: the connection stays open.
  curl_easy_reset(curl);
  const std::string url = ServerUrl(server);
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
  curl_easy_setopt(curl, CURLOPT_PROXY, "");
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(server.timeout_seconds));
  curl_easy_setopt(curl, CURLOPT_SERVER_RESPONSE_TIMEOUT,
                   static_cast<long>(server.timeout_seconds));
  // Detects a server that stops receiving: not a byte in all that time.
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, static_cast<long>(server.timeout_seconds));
  if (server.ssl) {
    curl_easy_setopt(curl, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    // OpenSSL's own variable: an office may have its own certificate authority.
    if (const char* authorities = std::getenv("SSL_CERT_FILE")) {
      curl_easy_setopt(curl, CURLOPT_CAINFO, authorities);
    }
  }
  if (!server.user.empty() || !server.password.empty()) {
    curl_easy_setopt(curl, CURLOPT_USERNAME, server.user.c_str());
    curl_easy_setopt(curl, CURLOPT_PASSWORD, server.password.c_str());
  }
}

// `about` names the message in errors.
void Converse(CURL* curl, const Server& server, const std::string& about) {
  Conversation conversation;
  curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, Watch);
  curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &conversation);
  curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L);
  std::array<char, CURL_ERROR_SIZE> detail{};
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail.data());

  if (server.stop_asked) {
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, AskToStop);
    curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &server);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  }

  const CURLcode code = curl_easy_perform(curl);
  // Later transfers must not reach this function's local variables.
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
  curl_easy_setopt(curl, CURLOPT_DEBUGDATA, nullptr);
  curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, nullptr);
  curl_easy_setopt(curl, CURLOPT_VERBOSE, 0L);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 1L);
  if (code == CURLE_OK) return;

  const int number = ErrorNumber(code, conversation);
  std::string text(Summary(number));
  text += " Server " + server.host + ":" + std::to_string(server.port) + about;
  if (number != error_number::kCancelled) {
    text.append(": ").append(detail[0] != '\0' ? detail.data() : curl_easy_strerror(code));
  }
  if (!conversation.refusal.empty()) {
    text += " (" + WithoutSecrets(conversation.refusal, server) + ")";
  }
  if (conversation.text_asked_for && conversation.refusal.empty()) {
    throw DeliveryUnknown(number, text, "CDO.Message");
  }
  throw RuntimeError(number, text, "CDO.Message");
}

}  // namespace

struct SmtpClient::State {
  State() : curl(curl_easy_init()) {
    if (curl == nullptr) throw std::bad_alloc();
  }
  ~State() { curl_easy_cleanup(curl); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  CURL* curl;
};

SmtpClient::SmtpClient() : state_(std::make_unique<State>()) {}
SmtpClient::~SmtpClient() = default;

void SmtpClient::Send(const Server& server, const Message& message) {
  CURL* curl = state_->curl;
  SetServer(curl, server);
  const std::string sender = "<" + message.from.address + ">";
  curl_easy_setopt(curl, CURLOPT_MAIL_FROM, sender.c_str());
  ListPtr recipients;
  for (const Address& address : message.to) Append(recipients, "<" + address.address + ">");
  curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients.get());
  ListPtr headers;
  for (const std::string& line : HeaderLines(message)) Append(headers, line);
  Append(headers, std::string("Content-Type: ") + BodyType(message));
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
  const MimePtr body = BuildBody(curl, message);
  curl_easy_setopt(curl, CURLOPT_MIMEPOST, body.get());

  Converse(curl, server, ", message to " + Recipients(message));
}

void SmtpClient::Check(const Server& server) {
  CURL* curl = state_->curl;
  SetServer(curl, server);
  curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, "NOOP");
  curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
  Converse(curl, server, ", connection test");
}

}  // namespace tenora::mail
