// Which mail server to send through, and how long to wait for it.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace tenora::mail {

// How long each step may take. The times behind `connect` are those that RFC 5321 4.5.3.2 asks of
// a client: a server that is given up too early may deliver a message that was taken for lost.
struct Waits {
  std::chrono::milliseconds connect = std::chrono::seconds(60);
  std::chrono::milliseconds greeting = std::chrono::minutes(5);  // also each answer of the login
  std::chrono::milliseconds sender = std::chrono::minutes(5);
  std::chrono::milliseconds recipient = std::chrono::minutes(5);
  std::chrono::milliseconds data = std::chrono::minutes(2);
  std::chrono::milliseconds block = std::chrono::minutes(3);  // not a byte of the text taken
  std::chrono::milliseconds end = std::chrono::minutes(10);   // from the final "." to the answer

  static Waits AllOf(std::chrono::milliseconds wait) {
    return {wait, wait, wait, wait, wait, wait, wait};
  }
};

struct Server {
  std::string host;
  int port = 25;
  // Port 465: encrypted from the first byte; any other: STARTTLS, and nothing is sent without it.
  // Certificates are always verified, against the system's authorities.
  bool ssl = false;
  std::string user, password;  // both empty: no authentication
  Waits waits;
  // Asked about once a second while the server keeps silent or takes a long text; true aborts the
  // session, which raises 32755 (Cancel was selected). May be empty.
  std::function<bool()> stop_asked;
};

}  // namespace tenora::mail
