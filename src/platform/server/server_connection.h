// One connection to a PostgreSQL server, through libpq, which is loaded at its first use.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/runtime/error.h"

namespace tenora::server {

// What became of a request that failed.
enum class ServerFailure {
  kNotConnected,  // there was no connection to send it over: nothing was done
  kRefused,       // the server said no: nothing of it was done
  kLost,          // the connection broke or the server fell silent: it was done, or it was not
  kStopped,       // as kLost, but because Waiting::stop_asked said so
};

// What goes wrong between us and a server: 3151 where it cannot be reached or refuses the login,
// 3146 where a statement fails or the connection breaks meanwhile, 32755 (Cancel was selected) for
// kStopped. The description has the server's words, which never contain a password.
class ServerError : public RuntimeError {
 public:
  // kRefused with a `state` or the number 3146, else kNotConnected.
  ServerError(int number, const std::string& description, std::string state = {});
  ServerError(int number, const std::string& description, ServerFailure failure)
      : RuntimeError(number, description, "DAO.Database"), failure_(failure) {}

  ServerFailure failure() const { return failure_; }
  // The server's code of five characters ("42501": no permission) where it refused a statement,
  // else empty.
  const std::string& state() const { return state_; }

 private:
  ServerFailure failure_;
  std::string state_;
};

namespace server_error {
inline constexpr int kCallFailed = 3146;
inline constexpr int kConnectionFailed = 3151;
}  // namespace server_error

// For how long a server is waited for.
struct Waiting {
  // Without a byte from it, or one that it takes. A statement that the server gives no time limit
  // is waited for as long as the server, asked over another connection, is at work on it.
  std::chrono::milliseconds silence = std::chrono::seconds(60);
  // Asked about ten times a second on the waiting thread; true ends the wait. May be empty.
  std::function<bool()> stop_asked = {};
  // How much of `silence` a server has all the same, to answer what is asked of it for the letter
  // in hand.
  std::chrono::milliseconds patience = std::chrono::seconds(2);
};

// Bytes for a "bytea", as they are.
struct Bytes {
  std::string bytes;
};
// A value for a statement: null, a text in the server's text form, or bytes.
using Parameter = std::variant<std::nullopt_t, std::string, Bytes>;

struct Query {
  std::string sql;
  std::vector<Parameter> parameters;
};

// What another session has said by "notify".
struct Notice {
  std::string channel, payload;
};

// The rows that a statement has given, in the server's text form.
class Result {
 public:
  virtual ~Result() = default;
  virtual int rows() const = 0;
  virtual bool IsNull(int row, int column) const = 0;
  // "" for null. Valid as long as the result.
  virtual std::string_view Text(int row, int column) const = 0;
  // How many rows an insert, update or delete has changed.
  virtual std::int64_t changed() const = 0;

  // A field that is a whole number; raises 3146 for any other.
  std::int64_t Integer(int row, int column) const;
  // Those of a "bytea"; raises 3146 for another field, except null, which has none.
  std::string BytesOf(int row, int column) const;
  bool Boolean(int row, int column) const { return Text(row, column) == "t"; }
};
using ResultPtr = std::unique_ptr<const Result>;

// Not thread-safe. All functions that wait for the server raise ServerError; after kLost and
// kStopped the connection is broken, and the server rolls back what was not committed.
class Connection {
 public:
  virtual ~Connection() = default;

  // Connects to what the libpq service of that name says (~/.pg_service.conf; passwords are in
  // ~/.pgpass). To a host that is not this computer the connection is encrypted and the server's
  // certificate verified, unless the service itself asks for another sslmode. No statement takes
  // longer than `limit`; 0 is no limit. An address that does not answer is given up after the
  // service's connect_timeout, or ten seconds.
  static std::unique_ptr<Connection> Open(const std::string& service, std::chrono::seconds limit,
                                          const Waiting& waiting = {});

  // A "commit" of a transaction in which a statement has failed is refused (25P02).
  virtual ResultPtr Run(const Query& query) = 0;
  ResultPtr Run(std::string sql) { return Run(Query{.sql = std::move(sql), .parameters = {}}); }
  // Runs statements one after the other in one round trip. After one that fails no other is run,
  // and its error is raised; a transaction that they began is rolled back.
  virtual std::vector<ResultPtr> RunTogether(std::span<const Query> queries) = 0;
  // Several statements of one text, without parameters.
  virtual void RunScript(const std::string& sql) = 0;

  // Sends rows to a statement "copy … from stdin": CopyText as often as needed, with whole or
  // partial lines of the text format, then EndCopy, which returns their number.
  virtual void BeginCopy(const std::string& sql) = 0;
  virtual void CopyText(std::string_view lines) = 0;
  virtual std::int64_t EndCopy() = 0;

  // Waits for what other sessions say on the channels that "listen" has named: at least one notice,
  // or none when the time is over or a stop is asked for, which leaves the connection as it was.
  virtual std::vector<Notice> WaitForNotices(std::chrono::milliseconds time) = 0;

  // Whether the connection is of no use any more.
  virtual bool IsBroken() const = 0;
  // How often this side has waited for the other.
  virtual int round_trips() const = 0;
  // The host, or the folder of the socket; with its port.
  virtual std::string Address() const = 0;
  virtual std::string DatabaseName() const = 0;
};

// A text as a literal, and as a name.
std::string Literal(std::string_view text);
std::string Name(std::string_view text);
// A field of the text format of "copy"; none is null.
void AppendCopyField(std::optional<std::string_view> field, std::string& line);
// Bytes in the server's hexadecimal form.
std::string HexBytes(std::string_view bytes);
// An array of texts that need no quotes, such as hexadecimal bytes and numbers.
std::string ArrayOf(std::span<const std::string> elements);

}  // namespace tenora::server
