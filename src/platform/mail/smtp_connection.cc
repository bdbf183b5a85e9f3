#include "platform/mail/smtp_connection.h"

#include <curl/curl.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <set>

#include "platform/mail/smtp_client.h"
#include "platform/runtime/error.h"
#include "platform/runtime/shared_library.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t kLongestAnswerShown = 500;
constexpr std::size_t kLongestAnswerLine = 64 * 1024;
constexpr std::size_t kBlock = 256 * 1024;
constexpr milliseconds kBetweenQuestions{1000};

// The library, loaded when the first e-mail is sent.
struct CurlLibrary {
  SharedLibrary library{"libcurl.so.4"};
  LibraryFunction<decltype(::curl_easy_cleanup)> easy_cleanup{library, "curl_easy_cleanup"};
  LibraryFunction<decltype(::curl_easy_getinfo)> easy_getinfo{library, "curl_easy_getinfo"};
  LibraryFunction<decltype(::curl_easy_init)> easy_init{library, "curl_easy_init"};
  LibraryFunction<decltype(::curl_easy_recv)> easy_recv{library, "curl_easy_recv"};
  LibraryFunction<decltype(::curl_easy_send)> easy_send{library, "curl_easy_send"};
  LibraryFunction<decltype(::curl_easy_setopt)> easy_setopt{library, "curl_easy_setopt"};
  LibraryFunction<decltype(::curl_easy_strerror)> easy_strerror{library, "curl_easy_strerror"};
  LibraryFunction<decltype(::curl_free)> free{library, "curl_free"};
  LibraryFunction<decltype(::curl_multi_add_handle)> multi_add_handle{library,
                                                                      "curl_multi_add_handle"};
  LibraryFunction<decltype(::curl_multi_cleanup)> multi_cleanup{library, "curl_multi_cleanup"};
  LibraryFunction<decltype(::curl_multi_info_read)> multi_info_read{library,
                                                                    "curl_multi_info_read"};
  LibraryFunction<decltype(::curl_multi_init)> multi_init{library, "curl_multi_init"};
  LibraryFunction<decltype(::curl_multi_perform)> multi_perform{library, "curl_multi_perform"};
  LibraryFunction<decltype(::curl_multi_poll)> multi_poll{library, "curl_multi_poll"};
  LibraryFunction<decltype(::curl_multi_remove_handle)> multi_remove_handle{
      library, "curl_multi_remove_handle"};
  LibraryFunction<decltype(::curl_multi_strerror)> multi_strerror{library, "curl_multi_strerror"};
  LibraryFunction<decltype(::curl_url)> url_new{library, "curl_url"};
  LibraryFunction<decltype(::curl_url_cleanup)> url_cleanup{library, "curl_url_cleanup"};
  LibraryFunction<decltype(::curl_url_get)> url_get{library, "curl_url_get"};
  LibraryFunction<decltype(::curl_url_set)> url_set{library, "curl_url_set"};
};

const CurlLibrary& Curl() {
  static const CurlLibrary kCurl;
  return kCurl;
}

struct FreeUrl {
  void operator()(CURLU* url) const { Curl().url_cleanup(url); }
};
using UrlPtr = std::unique_ptr<CURLU, FreeUrl>;

std::string ServerUrl(const Server& server) {
  const UrlPtr url(Curl().url_new());
  const bool implicit_tls = server.ssl && server.port == 465;
  const std::string port = std::to_string(server.port);
  const bool valid =
      !server.host.empty() && server.port > 0 &&
      Curl().url_set(url.get(), CURLUPART_SCHEME, implicit_tls ? "smtps" : "smtp", 0) ==
          CURLUE_OK &&
      Curl().url_set(url.get(), CURLUPART_HOST, server.host.c_str(), 0) == CURLUE_OK &&
      Curl().url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) == CURLUE_OK;
  char* text = nullptr;
  if (!valid || Curl().url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
    throw SmtpProblem(smtp_error::kCannotConnect,
                      "'" + server.host + ":" + port + "' is not the address of a mail server");
  }
  std::string result = text;
  Curl().free(text);
  return result;
}

// A server's reply for display: what is not printable UTF-8 is replaced.
std::string Printable(std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const char32_t c = TakeCodePoint(line);
    AppendUtf8(text, c < 0x20 || (c >= 0x7F && c < 0xA0) ? U' ' : c);
  }
  return text;
}

// Adds a line of a reply, "550-first line" or "550 last line"; false when it is none.
bool AddLine(Reply& reply, std::string_view line) {
  if (line.size() < 3 || !IsDigit(line[0]) || !IsDigit(line[1]) || !IsDigit(line[2])) return false;
  if (reply.code == 0) {
    reply.code = (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
    reply.text = line.substr(0, 3);
  }
  if (reply.text.size() > kLongestAnswerShown) return true;
  line.remove_prefix(std::min<std::size_t>(line.size(), 4));
  reply.text += ' ' + Printable(line.substr(0, kLongestAnswerShown));
  return true;
}

bool GoesOn(std::string_view line) { return line.size() > 3 && line[3] == '-'; }

int OpeningError(CURLcode code) {
  switch (code) {
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
      return smtp_error::kCertificate;
    case CURLE_LOGIN_DENIED:
      return smtp_error::kLoginRefused;
    default:
      return smtp_error::kCannotConnect;
  }
}

std::string Seconds(milliseconds wait) {
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(wait).count();
  return std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

// The server's replies up to the login, which libcurl reads.
struct Opening {
  std::string command;
  Reply refusal;
  bool refusal_open = false;
  std::set<std::string, std::less<>> extensions;
  Clock::time_point last_heard = Clock::now();
  std::array<char, CURL_ERROR_SIZE> error{};
};

int Watch(CURL*, curl_infotype type, char* data, std::size_t size, void* user) {
  auto& opening = *static_cast<Opening*>(user);
  if (type != CURLINFO_TEXT) opening.last_heard = Clock::now();
  std::string_view line(data, size);
  line = line.substr(0, line.find_last_not_of("\r\n") + 1);
  // Only the command word is kept: what follows AUTH would hold the password.
  if (type == CURLINFO_HEADER_OUT) {
    opening.command = line.substr(0, line.find(' '));
    if (opening.command == "EHLO") opening.extensions.clear();
  }
  if (type != CURLINFO_HEADER_IN) return 0;
  if (opening.command == "EHLO" && line.starts_with("250") && line.size() > 4) {
    const std::string_view words = line.substr(4);
    opening.extensions.insert(ToUpper(words.substr(0, words.find(' '))));
  }
  if (!line.starts_with('4') && !line.starts_with('5')) return 0;
  if (!opening.refusal_open) opening.refusal = {};
  opening.refusal_open = GoesOn(line);
  AddLine(opening.refusal, line);
  return 0;
}

}  // namespace

struct SmtpConnection::Transport {
  Transport() : multi(Curl().multi_init()), curl(Curl().easy_init()) {
    if (multi != nullptr && curl != nullptr) return;
    Free();
    throw std::bad_alloc();
  }
  ~Transport() { Free(); }
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;

  void Free() const {
    if (multi != nullptr && curl != nullptr) Curl().multi_remove_handle(multi, curl);
    Curl().easy_cleanup(curl);
    if (multi != nullptr) Curl().multi_cleanup(multi);
  }

  CURLM* multi;
  CURL* curl;
  curl_socket_t socket = CURL_SOCKET_BAD;
  Opening opening;
};

SmtpConnection::SmtpConnection(const Server& server)
    : server_(server), transport_(std::make_unique<Transport>()) {
  CURL* curl = transport_->curl;
  Curl().easy_setopt(curl, CURLOPT_URL, ServerUrl(server).c_str());
  Curl().easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
  Curl().easy_setopt(curl, CURLOPT_PROXY, "");
  Curl().easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  // libcurl goes as far as the login; the messages are sent here, where each step has a wait of its
  // own and an answer that comes too late or without a question is noticed.
  Curl().easy_setopt(curl, CURLOPT_CONNECT_ONLY, 1L);
  // Open() has its own limits; libcurl's defaults are shorter than the greeting may take.
  constexpr long kOneDay = 24 * 60 * 60;
  Curl().easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kOneDay);
  Curl().easy_setopt(curl, CURLOPT_SERVER_RESPONSE_TIMEOUT, kOneDay);
  if (server.ssl) {
    Curl().easy_setopt(curl, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    // OpenSSL's own variable: an office may have its own certificate authority.
    if (const char* authorities = std::getenv("SSL_CERT_FILE")) {
      Curl().easy_setopt(curl, CURLOPT_CAINFO, authorities);
    }
  }
  if (!server.user.empty() || !server.password.empty()) {
    Curl().easy_setopt(curl, CURLOPT_USERNAME, server.user.c_str());
    Curl().easy_setopt(curl, CURLOPT_PASSWORD, server.password.c_str());
  }
  Curl().easy_setopt(curl, CURLOPT_DEBUGFUNCTION, Watch);
  Curl().easy_setopt(curl, CURLOPT_DEBUGDATA, &transport_->opening);
  Curl().easy_setopt(curl, CURLOPT_VERBOSE, 1L);
  Curl().easy_setopt(curl, CURLOPT_ERRORBUFFER, transport_->opening.error.data());
  Open();
  in_step_ = true;
}

SmtpConnection::~SmtpConnection() {
  if (!in_step_) return;
  constexpr std::string_view kQuit = "QUIT\r\n";
  std::size_t sent = 0;
  Curl().easy_send(transport_->curl, kQuit.data(), kQuit.size(), &sent);
}

void SmtpConnection::Open() {
  CURL* curl = transport_->curl;
  Opening& opening = transport_->opening;
  Curl().multi_add_handle(transport_->multi, curl);
  const Clock::time_point start = Clock::now();
  bool connected = false;
  CURLcode code = CURLE_OK;
  for (int running = 1; running > 0;) {
    const CURLMcode step = Curl().multi_perform(transport_->multi, &running);
    if (step != CURLM_OK) {
      throw SmtpProblem(smtp_error::kCannotConnect, Curl().multi_strerror(step));
    }
    int queued = 0;
    if (const CURLMsg* message = Curl().multi_info_read(transport_->multi, &queued)) {
      code = message->data.result;
      break;
    }
    curl_off_t connect_time = 0;
    Curl().easy_getinfo(curl, CURLINFO_CONNECT_TIME_T, &connect_time);
    if (connect_time > 0 && !connected) {
      connected = true;
      opening.last_heard = Clock::now();
    }
    const milliseconds wait = connected ? server_.waits.greeting : server_.waits.connect;
    const auto left = (connected ? opening.last_heard : start) + wait - Clock::now();
    if (left <= Clock::duration::zero()) {
      throw SmtpProblem(smtp_error::kCannotConnect,
                        (connected ? "no answer in " : "no connection in ") + Seconds(wait), {},
                        true);
    }
    AskToStop();
    const auto slice = std::min(std::chrono::ceil<milliseconds>(left), kBetweenQuestions);
    Curl().multi_poll(transport_->multi, nullptr, 0, static_cast<int>(slice.count()), nullptr);
  }
  Curl().easy_setopt(curl, CURLOPT_VERBOSE, 0L);
  if (code != CURLE_OK) {
    throw SmtpProblem(OpeningError(code),
                      opening.error[0] != '\0' ? opening.error.data() : Curl().easy_strerror(code),
                      opening.refusal);
  }
  if (Curl().easy_getinfo(curl, CURLINFO_ACTIVESOCKET, &transport_->socket) != CURLE_OK ||
      transport_->socket == CURL_SOCKET_BAD) {
    throw SmtpProblem(smtp_error::kCannotConnect, "the connection was lost");
  }
}

bool SmtpConnection::IsTo(const Server& server) const {
  return server.host == server_.host && server.port == server_.port && server.ssl == server_.ssl &&
         server.user == server_.user && server.password == server_.password;
}

void SmtpConnection::set_stop_asked(std::function<bool()> stop_asked) {
  server_.stop_asked = std::move(stop_asked);
}

bool SmtpConnection::Offers(std::string_view extension) const {
  return transport_->opening.extensions.contains(extension);
}

Reply SmtpConnection::Ask(const std::string& command, milliseconds wait) {
  RequireSilence();
  Write(command + "\r\n", wait);
  return ReadReply(wait);
}

void SmtpConnection::SendText(std::string_view text, milliseconds wait) {
  while (!text.empty()) {
    Write(text.substr(0, kBlock), wait);
    text.remove_prefix(std::min(kBlock, text.size()));
    if (!text.empty()) AskToStop();
  }
}

void SmtpConnection::SendEnd(milliseconds wait) {
  // The last moment to call it off, also for a process that was stopped meanwhile.
  AskToStop();
  RequireSilence();
  Write(".\r\n", wait);
}

Reply SmtpConnection::ReadReply(milliseconds wait) {
  const Clock::time_point deadline = Clock::now() + wait;
  Reply reply;
  for (;;) {
    const std::size_t end = input_.find('\n');
    if (end == std::string::npos) {
      if (input_.size() > kLongestAnswerLine) {
        throw SmtpProblem(smtp_error::kCannotConnect, "the server's answer has no end");
      }
      if (!Receive()) Await(POLLIN, deadline, wait);
      continue;
    }
    std::string line = input_.substr(0, end);
    input_.erase(0, end + 1);
    if (line.ends_with('\r')) line.pop_back();
    if (!AddLine(reply, line)) {
      throw SmtpProblem(smtp_error::kCannotConnect,
                        "the server's answer is none of SMTP: " + Printable(line.substr(0, 80)));
    }
    if (!GoesOn(line)) break;
    // However many lines there are.
    if (Clock::now() > deadline) Await(POLLIN, deadline, wait);
  }
  in_step_ = true;
  return reply;
}

// Raises for bytes or the end of the connection where the server has nothing to say: what it says
// would be read as the answer to the next command.
void SmtpConnection::RequireSilence() {
  try {
    while (input_.size() < kLongestAnswerLine && Receive()) {
    }
  } catch (const SmtpProblem&) {
    if (input_.empty()) throw;
  }
  if (input_.empty()) return;
  in_step_ = false;
  Reply answer;
  AddLine(answer, std::string_view(input_).substr(0, input_.find_first_of("\r\n")));
  const char* what = answer.Refuses() ? "the server broke in"
                                      : "the server sent an answer that nothing had asked for";
  throw SmtpProblem(smtp_error::kCannotConnect, what, std::move(answer));
}

void SmtpConnection::Write(std::string_view bytes, milliseconds wait) {
  in_step_ = false;
  Clock::time_point deadline = Clock::now() + wait;
  while (!bytes.empty()) {
    std::size_t sent = 0;
    const CURLcode code = Curl().easy_send(transport_->curl, bytes.data(), bytes.size(), &sent);
    if (code == CURLE_AGAIN) {
      Await(POLLOUT, deadline, wait);
    } else if (code != CURLE_OK) {
      // The server may have said why it hung up.
      RequireSilence();
      throw SmtpProblem(smtp_error::kCannotConnect, "the connection was cut");
    } else {
      bytes.remove_prefix(sent);
      deadline = Clock::now() + wait;
    }
  }
}

// False when nothing is there to be read.
bool SmtpConnection::Receive() {
  std::array<char, 4096> block{};
  std::size_t received = 0;
  const CURLcode code = Curl().easy_recv(transport_->curl, block.data(), block.size(), &received);
  if (code == CURLE_AGAIN) return false;
  if (code != CURLE_OK || received == 0) {
    in_step_ = false;
    throw SmtpProblem(smtp_error::kCannotConnect, "the connection was cut");
  }
  input_.append(block.data(), received);
  return true;
}

void SmtpConnection::Await(short events, Clock::time_point deadline, milliseconds wait) const {
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (left <= milliseconds::zero()) {
      throw SmtpProblem(smtp_error::kCannotConnect, "no answer in " + Seconds(wait), {}, true);
    }
    pollfd socket{transport_->socket, events, 0};
    const auto slice = static_cast<int>(std::min(left, kBetweenQuestions).count());
    if (::poll(&socket, 1, slice) > 0) return;
    AskToStop();
  }
}

void SmtpConnection::AskToStop() const {
  if (server_.stop_asked && server_.stop_asked()) {
    throw SmtpProblem(error_number::kCancelled, "stopped");
  }
}

}  // namespace tenora::mail
