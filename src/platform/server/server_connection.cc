#include "platform/server/server_connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <type_traits>

#include "platform/runtime/text.h"
#include "platform/server/pq_library.h"

namespace tenora::server {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Between two questions whether to stop.
constexpr milliseconds kSlice{100};
constexpr std::chrono::seconds kConnectTime{10};
// After it, libpq is expected to have tried the next address by itself.
constexpr milliseconds kConnectMargin{1000};
// With the keepalives below, a cut cable is noticed after this time.
constexpr std::chrono::seconds kCutCable{25};
// For the question whether a server is still at work.
constexpr std::chrono::seconds kProbeTime{10};

// A number in digits; 0 for what is none.
template <typename Number = int>
Number NumberIn(std::string_view text) {
  Number number = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
  return status == std::errc() && end == text.data() + text.size() ? number : 0;
}

// One line of the words of libpq, which indents its hints in lines of their own, or of the server.
std::string OneLine(const char* words) {
  std::string text = words == nullptr ? "" : words;
  text = ReplaceAll(std::move(text), "\n\t", ". ");
  std::ranges::replace(text, '\n', ' ');
  return std::string(TrimBlanks(text));
}

// The options that a connection has taken from the service, the environment and libpq's defaults.
class Options {
 public:
  explicit Options(PGconn* connection) : options_(Pq().options(connection)) {}
  ~Options() { Pq().free_options(options_); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  std::string Get(std::string_view keyword) const {
    for (const PQconninfoOption* option = options_; option != nullptr && option->keyword != nullptr;
         ++option) {
      if (keyword == option->keyword) return option->val == nullptr ? "" : option->val;
    }
    return {};
  }

 private:
  PQconninfoOption* options_;
};

bool IsThisComputer(const std::string& host) {
  return host.empty() || host.front() == '/' || host.front() == '@' || host == "localhost" ||
         host == "127.0.0.1" || host == "::1";
}

// Several hosts are separated by commas.
bool AreThisComputer(const std::string& hosts) {
  return std::ranges::all_of(Split(hosts, ","), IsThisComputer);
}

using Keywords = std::vector<std::pair<std::string, std::string>>;

ConnectionPtr StartConnecting(const Keywords& keywords) {
  std::vector<const char*> names, values;
  for (const auto& [name, value] : keywords) {
    names.push_back(name.c_str());
    values.push_back(value.c_str());
  }
  names.push_back(nullptr);
  values.push_back(nullptr);
  ConnectionPtr connection(Pq().connect_start(names.data(), values.data(), 0));
  if (connection == nullptr) throw StandardError(error_number::kOutOfMemory);
  return connection;
}

struct ConnectPlan {
  Keywords keywords;
  std::chrono::seconds time{};  // for an address to answer
  bool own_user_timeout = true;
};

ConnectPlan PlanFor(const std::string& service, std::chrono::seconds limit) {
  ConnectPlan plan;
  Keywords& keywords = plan.keywords;
  keywords = {{"service", service}, {"fallback_application_name", "tenora"}};
  // What the values' text forms, Literal and row security depend on, whatever the defaults of the
  // server and the login are.
  const std::string settings =
      "-c datestyle=ISO -c extra_float_digits=1 -c bytea_output=hex -c TimeZone=UTC "
      "-c standard_conforming_strings=on -c search_path=pg_catalog -c row_security=on "
      "-c statement_timeout=" +
      std::to_string(limit.count() * 1000);
  keywords.emplace_back("options", settings);
  keywords.emplace_back("client_encoding", "UTF8");

  // libpq's own defaults wait for minutes, and send passwords to whoever answers.
  const ConnectionPtr probe = StartConnecting(keywords);
  const Options options(probe.get());
  const int time = NumberIn(options.Get("connect_timeout"));
  plan.time = time > 0 ? std::chrono::seconds(time) : kConnectTime;
  plan.own_user_timeout = options.Get("tcp_user_timeout").empty();
  if (plan.own_user_timeout) {
    // While connecting; it makes libpq go on to the next address or host.
    keywords.emplace_back("tcp_user_timeout", std::to_string(milliseconds(plan.time).count()));
  }
  if (options.Get("keepalives_idle").empty()) {
    keywords.emplace_back("keepalives_idle", "10");
    keywords.emplace_back("keepalives_interval", "5");
    keywords.emplace_back("keepalives_count", "3");
  }
  const std::string host =
      options.Get("hostaddr").empty() ? options.Get("host") : options.Get("hostaddr");
  if (!AreThisComputer(host) && options.Get("sslmode") == "prefer") {
    keywords.emplace_back("sslmode", "verify-full");
  }
  return plan;
}

enum class Waited { kReady, kSilent, kStopped };

// Waits until something can be read from a socket or written to it.
Waited WaitForSocket(int socket, short events, const Waiting& waiting) {
  const auto start = Clock::now();
  for (;;) {
    const auto waited = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    const bool stop = waiting.stop_asked && waiting.stop_asked();
    if (stop && waited >= waiting.patience) return Waited::kStopped;
    if (waited >= waiting.silence) return Waited::kSilent;
    pollfd descriptor{.fd = socket, .events = events, .revents = 0};
    const milliseconds left = waiting.silence - waited;
    const milliseconds slice = waiting.stop_asked ? std::min(left, kSlice) : left;
    const int ready = ::poll(&descriptor, 1, static_cast<int>(slice.count()));
    // Of an error libpq will tell.
    if (ready > 0 || (ready < 0 && errno != EINTR)) return Waited::kReady;
  }
}

// "60 s", "0.2 s".
std::string SecondsText(milliseconds time) {
  std::string text = std::to_string(time.count() / 1000);
  if (time.count() % 1000 >= 100) text += "." + std::to_string(time.count() % 1000 / 100);
  return text + " s";
}

// Enough of a statement to know it by: "select … rental.revenues".
std::string Abridged(std::string_view sql) {
  constexpr std::size_t kShort = 60;
  if (sql.size() <= kShort) return std::string(sql);
  std::string text(sql.substr(0, std::min(sql.find(' '), kShort)));
  const std::size_t table = sql.find(" rental.");
  text += " …";
  if (table != std::string_view::npos) {
    const std::size_t end = sql.find_first_of(" (,;", table + 1);
    text += sql.substr(table, std::min(end - table, kShort));
  }
  return text;
}

class PqResult : public Result {
 public:
  explicit PqResult(PgResultPtr result) : result_(std::move(result)) {}

  int rows() const override { return Pq().rows(result_.get()); }
  bool IsNull(int row, int column) const override {
    return Pq().is_null(result_.get(), row, column) != 0;
  }
  std::string_view Text(int row, int column) const override {
    return {Pq().value(result_.get(), row, column),
            static_cast<std::size_t>(Pq().length(result_.get(), row, column))};
  }
  std::int64_t changed() const override { return RowsOf(result_.get()); }

  static std::int64_t RowsOf(PGresult* result) {
    return NumberIn<std::int64_t>(Pq().command_rows(result));
  }

 private:
  PgResultPtr result_;
};

// The parameters of a query as libpq takes them; the query outlives them.
class Values {
 public:
  explicit Values(const Query& query) {
    for (const Parameter& parameter : query.parameters) std::visit(*this, parameter);
  }

  void operator()(std::nullopt_t) { Add(0, nullptr, 0, kText); }
  void operator()(const std::string& text) { Add(0, text.c_str(), text.size(), kText); }
  void operator()(const Bytes& bytes) {
    constexpr Oid kBytea = 17;
    Add(kBytea, bytes.bytes.data(), bytes.bytes.size(), kBinary);
  }

  int Send(PGconn* connection, const std::string& sql) const {
    return Pq().send(connection, sql.c_str(), static_cast<int>(values_.size()), types_.data(),
                     values_.data(), lengths_.data(), formats_.data(), 0);
  }

 private:
  static constexpr int kText = 0, kBinary = 1;

  void Add(Oid type, const char* value, std::size_t length, int format) {
    types_.push_back(type);
    values_.push_back(value);
    lengths_.push_back(static_cast<int>(length));
    formats_.push_back(format);
  }

  std::vector<Oid> types_;
  std::vector<const char*> values_;
  std::vector<int> lengths_, formats_;
};

class PqConnection : public Connection {
 public:
  PqConnection(const std::string& service, std::chrono::seconds limit, const Waiting& waiting)
      : service_(service), limit_(limit), waiting_(waiting) {
    Connect();
    // The server's remarks, as of a table that exists already, are for nobody's terminal.
    Pq().set_remarks(
        connection_.get(), [](void*, const char*) {}, nullptr);
  }

  ResultPtr Run(const Query& query) override {
    Begin(query.sql);
    RequireSent(Values(query).Send(connection_.get(), query.sql));
    Flush();
    PgResultPtr result = Answer();
    RequireSuccess(result.get());
    if (query.sql == "commit" && std::string_view(Pq().command(result.get())) == "ROLLBACK") {
      throw ServerError(server_error::kCallFailed,
                        "The server " + Address() +
                            " has rolled back the transaction, a statement of which had failed",
                        kFailedTransaction);
    }
    return std::make_unique<PqResult>(std::move(result));
  }

  std::vector<ResultPtr> RunTogether(std::span<const Query> queries) override {
    Begin({});
    RequireSent(Pq().enter_pipeline(connection_.get()));
    std::vector<ResultPtr> results;
    std::optional<ServerError> error;
    for (const Query& query : queries) {
      doing_ = query.sql;
      RequireSent(Values(query).Send(connection_.get(), query.sql));
    }
    RequireSent(Pq().sync(connection_.get()));
    Flush();
    for (const Query& query : queries) {
      doing_ = query.sql;
      PgResultPtr result = NextResult();
      try {
        if (!error) {
          RequireSuccess(result.get());
          results.push_back(std::make_unique<PqResult>(std::move(result)));
        }
      } catch (const ServerError& first) {
        if (first.failure() != ServerFailure::kRefused) throw;
        error = first;
      }
      if (PgResultPtr end = NextResult(); end != nullptr) RequireSuccess(end.get());
    }
    NextResult();  // of the synchronization
    RequireSent(Pq().exit_pipeline(connection_.get()));
    if (Pq().transaction(connection_.get()) == PQTRANS_INERROR)
      Run({.sql = "rollback", .parameters = {}});
    if (error) throw ServerError(*error);
    return results;
  }

  void RunScript(const std::string& sql) override {
    Begin(sql);
    RequireSent(Pq().send_script(connection_.get(), sql.c_str()));
    Flush();
    RequireSuccess(Answer().get());
  }

  void BeginCopy(const std::string& sql) override {
    Begin(sql);
    RequireSent(Pq().send_script(connection_.get(), sql.c_str()));
    Flush();
    const PgResultPtr result = Answer();
    copying_ = Pq().status(result.get()) == PGRES_COPY_IN;
    if (!copying_) RequireSuccess(result.get());
  }

  void CopyText(std::string_view lines) override {
    RequireUsable();
    RequireSent(Pq().put_copy(connection_.get(), lines.data(), static_cast<int>(lines.size())) == 1
                    ? 1
                    : 0);
    Flush();
  }

  std::int64_t EndCopy() override {
    RequireUsable();
    ++round_trips_;
    const PgResultPtr result = LeaveCopy(nullptr);
    RequireSuccess(result.get());
    return PqResult::RowsOf(result.get());
  }

  std::vector<Notice> WaitForNotices(milliseconds time) override {
    RequireUsable();
    doing_ = "listen";
    const auto end = Clock::now() + time;
    Waiting waiting{.stop_asked = waiting_.stop_asked, .patience = {}};
    for (;;) {
      std::vector<Notice> notices;
      while (const auto notice = PgNoticePtr(Pq().next_notice(connection_.get()))) {
        notices.push_back({notice->relname, notice->extra});
      }
      if (!notices.empty()) return notices;
      waiting.silence = std::chrono::ceil<milliseconds>(end - Clock::now());
      const Waited waited = WaitForSocket(Pq().socket(connection_.get()), POLLIN, waiting);
      if (waited != Waited::kReady) return notices;
      RequireSent(Pq().consume_input(connection_.get()));
    }
  }

  bool IsBroken() const override {
    return broken_ || Pq().connection_status(connection_.get()) != CONNECTION_OK;
  }
  int round_trips() const override { return round_trips_; }

  std::string Address() const override {
    return std::string(Pq().host(connection_.get())) + ":" + Pq().port(connection_.get());
  }
  std::string DatabaseName() const override { return Pq().database(connection_.get()); }

 private:
  static constexpr const char* kFailedTransaction = "25P02";

  void Connect() {
    const ConnectPlan plan = PlanFor(service_, limit_);
    connection_ = StartConnecting(plan.keywords);
    PGconn* const connection = connection_.get();
    Waiting waiting = waiting_;
    waiting.silence = std::min(waiting.silence, milliseconds(plan.time) + kConnectMargin);
    const bool begun = Pq().connection_status(connection) != CONNECTION_BAD;
    auto next = begun ? PGRES_POLLING_WRITING : PGRES_POLLING_FAILED;
    while (next != PGRES_POLLING_OK && next != PGRES_POLLING_FAILED) {
      const short events = next == PGRES_POLLING_READING ? POLLIN : POLLOUT;
      const Waited waited = WaitForSocket(Pq().socket(connection), events, waiting);
      if (waited == Waited::kStopped) {
        throw ServerError(error_number::kCancelled,
                          "Connecting to the server " + Address() + " was stopped",
                          ServerFailure::kStopped);
      }
      if (waited == Waited::kSilent) {
        ThrowUnconnected(Address() + " did not answer for " +
                         SecondsText(std::min(waiting.silence, milliseconds(plan.time))));
      }
      next = Pq().connect_poll(connection);
    }
    if (next == PGRES_POLLING_FAILED) ThrowUnconnected(OneLine(Pq().error(connection)));
    if (plan.own_user_timeout) {
      // Of a local socket it cannot be set, nor need be.
      const int time = static_cast<int>(milliseconds(kCutCable).count());
      ::setsockopt(Pq().socket(connection), IPPROTO_TCP, TCP_USER_TIMEOUT, &time, sizeof time);
    }
    if (Pq().set_nonblocking(connection, 1) != 0) ThrowUnconnected(OneLine(Pq().error(connection)));
  }

  [[noreturn]] void ThrowUnconnected(const std::string& why) const {
    throw ServerError(server_error::kConnectionFailed,
                      "The server of the service '" + service_ + "' cannot be used: " + why);
  }

  void RequireUsable() const {
    if (!IsBroken()) return;
    throw ServerError(server_error::kConnectionFailed,
                      "The connection to the server " + Address() + " was lost before");
  }

  // Before every request.
  void Begin(const std::string& sql) {
    RequireUsable();
    // What sent the rows has failed in between.
    if (copying_) LeaveCopy("abandoned");
    ++round_trips_;
    doing_ = sql;
  }

  // With an error, the rows are not kept.
  PgResultPtr LeaveCopy(const char* error) {
    copying_ = false;
    RequireSent(Pq().end_copy(connection_.get(), error) == 1 ? 1 : 0);
    Flush();
    return Answer();
  }

  // All waiting on an open connection.
  void Await(short events) {
    for (;;) {
      const Waited waited = WaitForSocket(Pq().socket(connection_.get()), events, waiting_);
      if (waited == Waited::kReady) return;
      if (waited == Waited::kStopped) {
        broken_ = true;
        throw ServerError(error_number::kCancelled,
                          "Waiting for the server " + Address() + " was stopped" + Doing(),
                          ServerFailure::kStopped);
      }
      const bool slow_statement = limit_.count() == 0 && !copying_ && (events & POLLOUT) == 0;
      if (slow_statement && IsAtWork()) continue;
      broken_ = true;
      throw ServerError(
          server_error::kCallFailed,
          "The server " + Address() + " was silent for " + SecondsText(waiting_.silence) + Doing(),
          ServerFailure::kLost);
    }
  }

  // Whether the server, asked over another connection, is at work on what it was asked over this
  // one. Raises kStopped only.
  bool IsAtWork() const {
    try {
      PqConnection other(service_, kProbeTime, waiting_);
      const Query query{.sql =
                            "select exists (select from pg_stat_activity where pid = $1 and "
                            "state = 'active')",
                        .parameters = {std::to_string(Pq().backend(connection_.get()))}};
      return other.Run(query)->Boolean(0, 0);
    } catch (const ServerError& error) {
      if (error.failure() == ServerFailure::kStopped) throw;
      return false;
    }
  }

  // Until everything is sent. The server may have to be heard before it takes more.
  void Flush() {
    for (;;) {
      const int left = Pq().flush(connection_.get());
      RequireSent(left >= 0 ? 1 : 0);
      if (left == 0) return;
      Await(POLLIN | POLLOUT);
      RequireSent(Pq().consume_input(connection_.get()));
    }
  }

  PgResultPtr NextResult() {
    while (Pq().is_busy(connection_.get()) != 0) {
      Await(POLLIN);
      RequireSent(Pq().consume_input(connection_.get()));
    }
    return PgResultPtr(Pq().next_result(connection_.get()));
  }

  // The last result of what was sent, or its error.
  PgResultPtr Answer() {
    PgResultPtr answer;
    for (;;) {
      PgResultPtr next = NextResult();
      if (next == nullptr) return answer;
      constexpr std::array kCopies = {PGRES_COPY_IN, PGRES_COPY_OUT, PGRES_COPY_BOTH};
      const bool copies = std::ranges::count(kCopies, Pq().status(next.get())) > 0;
      answer = std::move(next);
      if (copies) return answer;
    }
  }

  // " while it ran 'select … rental.revenues'".
  std::string Doing() const {
    return doing_.empty() ? "" : " while it ran '" + Abridged(doing_) + "'";
  }

  [[noreturn]] void ThrowLost(const std::string& words) {
    broken_ = true;
    throw ServerError(
        server_error::kCallFailed,
        "The connection to the server " + Address() + " failed" + Doing() + ": " + words,
        ServerFailure::kLost);
  }

  void RequireSent(int done) {
    if (done == 0) ThrowLost(OneLine(Pq().error(connection_.get())));
  }

  void RequireSuccess(const PGresult* result) {
    const ExecStatusType status = Pq().status(result);
    constexpr std::array kGood = {PGRES_COMMAND_OK, PGRES_TUPLES_OK, PGRES_EMPTY_QUERY,
                                  PGRES_PIPELINE_SYNC};
    if (std::ranges::find(kGood, status) != kGood.end()) return;
    const auto field = [&](int code) {
      const char* const text = result == nullptr ? nullptr : Pq().error_field(result, code);
      return OneLine(text);
    };
    const std::string state = field(PG_DIAG_SQLSTATE);
    const std::string severity = field(PG_DIAG_SEVERITY_NONLOCALIZED);
    const std::string words = field(PG_DIAG_MESSAGE_PRIMARY);
    if (state.empty()) ThrowLost(OneLine(Pq().error(connection_.get())));
    // With these the server ends the session, perhaps after having committed.
    if (severity == "FATAL" || severity == "PANIC") ThrowLost(words);
    throw ServerError(server_error::kCallFailed,
                      "The server " + Address() + " refused a statement: " + words, state);
  }

  const std::string service_;
  const std::chrono::seconds limit_;
  const Waiting waiting_;
  ConnectionPtr connection_;
  std::string doing_;  // the statement that an answer is waited for of
  bool copying_ = false;
  int round_trips_ = 0;
  bool broken_ = false;  // an answer is missing, so that the next one could be taken for it
};

}  // namespace

std::unique_ptr<Connection> Connection::Open(const std::string& service, std::chrono::seconds limit,
                                             const Waiting& waiting) {
  return std::make_unique<PqConnection>(service, limit, waiting);
}

}  // namespace tenora::server
