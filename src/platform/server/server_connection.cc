#include "platform/server/server_connection.h"

#include <libpq-fe.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/runtime/shared_library.h"
#include "platform/runtime/text.h"

namespace tenora::server {
namespace {

struct PqLibrary {
  SharedLibrary library{"libpq.so.5"};
  LibraryFunction<decltype(::PQclear)> clear{library, "PQclear"};
  LibraryFunction<decltype(::PQcmdTuples)> command_rows{library, "PQcmdTuples"};
  LibraryFunction<decltype(::PQconnectStartParams)> connect_start{library, "PQconnectStartParams"};
  LibraryFunction<decltype(::PQconnectdbParams)> connect{library, "PQconnectdbParams"};
  LibraryFunction<decltype(::PQconninfo)> options{library, "PQconninfo"};
  LibraryFunction<decltype(::PQconninfoFree)> free_options{library, "PQconninfoFree"};
  LibraryFunction<decltype(::PQdb)> database{library, "PQdb"};
  LibraryFunction<decltype(::PQenterPipelineMode)> enter_pipeline{library, "PQenterPipelineMode"};
  LibraryFunction<decltype(::PQerrorMessage)> error{library, "PQerrorMessage"};
  LibraryFunction<decltype(::PQexec)> execute{library, "PQexec"};
  LibraryFunction<decltype(::PQexecParams)> execute_with{library, "PQexecParams"};
  LibraryFunction<decltype(::PQexitPipelineMode)> exit_pipeline{library, "PQexitPipelineMode"};
  LibraryFunction<decltype(::PQfinish)> finish{library, "PQfinish"};
  LibraryFunction<decltype(::PQgetResult)> next_result{library, "PQgetResult"};
  LibraryFunction<decltype(::PQgetisnull)> is_null{library, "PQgetisnull"};
  LibraryFunction<decltype(::PQgetlength)> length{library, "PQgetlength"};
  LibraryFunction<decltype(::PQgetvalue)> value{library, "PQgetvalue"};
  LibraryFunction<decltype(::PQhost)> host{library, "PQhost"};
  LibraryFunction<decltype(::PQnfields)> columns{library, "PQnfields"};
  LibraryFunction<decltype(::PQntuples)> rows{library, "PQntuples"};
  LibraryFunction<decltype(::PQpipelineSync)> sync{library, "PQpipelineSync"};
  LibraryFunction<decltype(::PQport)> port{library, "PQport"};
  LibraryFunction<decltype(::PQputCopyData)> put_copy{library, "PQputCopyData"};
  LibraryFunction<decltype(::PQputCopyEnd)> end_copy{library, "PQputCopyEnd"};
  LibraryFunction<decltype(::PQresultErrorField)> error_field{library, "PQresultErrorField"};
  LibraryFunction<decltype(::PQresultStatus)> status{library, "PQresultStatus"};
  LibraryFunction<decltype(::PQsendQueryParams)> send{library, "PQsendQueryParams"};
  LibraryFunction<decltype(::PQsetNoticeProcessor)> set_notices{library, "PQsetNoticeProcessor"};
  LibraryFunction<decltype(::PQstatus)> connection_status{library, "PQstatus"};
  LibraryFunction<decltype(::PQtransactionStatus)> transaction{library, "PQtransactionStatus"};
};

const PqLibrary& Pq() {
  static const PqLibrary kPq;
  return kPq;
}

struct FinishConnection {
  void operator()(PGconn* connection) const { Pq().finish(connection); }
};
using ConnectionPtr = std::unique_ptr<PGconn, FinishConnection>;

struct ClearResult {
  void operator()(PGresult* result) const { Pq().clear(result); }
};
using PgResultPtr = std::unique_ptr<PGresult, ClearResult>;

// One line of the words of libpq or the server.
std::string OneLine(const char* words) {
  std::string text = words == nullptr ? "" : words;
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

template <typename Connect>
ConnectionPtr ConnectWith(const Keywords& keywords, const Connect& connect) {
  std::vector<const char*> names, values;
  for (const auto& [name, value] : keywords) {
    names.push_back(name.c_str());
    values.push_back(value.c_str());
  }
  names.push_back(nullptr);
  values.push_back(nullptr);
  return ConnectionPtr(connect(names.data(), values.data(), 0));
}

Keywords KeywordsFor(const std::string& service, std::chrono::seconds limit) {
  Keywords keywords = {{"service", service}, {"fallback_application_name", "tenora"}};
  // What the values' text forms and Literal depend on, whatever the server's own defaults are.
  const std::string settings =
      "-c datestyle=ISO -c extra_float_digits=1 -c bytea_output=hex -c TimeZone=UTC "
      "-c standard_conforming_strings=on -c search_path=pg_catalog -c statement_timeout=" +
      std::to_string(limit.count() * 1000);
  keywords.emplace_back("options", settings);
  keywords.emplace_back("client_encoding", "UTF8");

  // libpq's own defaults wait for minutes, and send passwords to whoever answers.
  const ConnectionPtr probe = ConnectWith(keywords, Pq().connect_start);
  if (probe == nullptr) throw StandardError(error_number::kOutOfMemory);
  const Options options(probe.get());
  if (options.Get("connect_timeout").empty()) keywords.emplace_back("connect_timeout", "10");
  if (options.Get("tcp_user_timeout").empty()) keywords.emplace_back("tcp_user_timeout", "30000");
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
  return keywords;
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
  std::int64_t changed() const override {
    const std::string text = Pq().command_rows(result_.get());
    return text.empty() ? 0 : std::stoll(text);
  }

 private:
  PgResultPtr result_;
};

class PqConnection : public Connection {
 public:
  PqConnection(const std::string& service, std::chrono::seconds limit)
      : connection_(ConnectWith(KeywordsFor(service, limit), Pq().connect)) {
    if (Pq().connection_status(connection_.get()) != CONNECTION_OK) {
      throw ServerError(server_error::kConnectionFailed,
                        "The server of the service '" + service +
                            "' cannot be used: " + OneLine(Pq().error(connection_.get())));
    }
    // The server's remarks, as of a table that exists already, are for nobody's terminal.
    Pq().set_notices(
        connection_.get(), [](void*, const char*) {}, nullptr);
  }

  ResultPtr Run(const Query& query) override {
    ++round_trips_;
    const std::vector<const char*> values = Values(query);
    PgResultPtr result(Pq().execute_with(connection_.get(), query.sql.c_str(),
                                         static_cast<int>(values.size()), nullptr, values.data(),
                                         nullptr, nullptr, 0));
    RequireSuccess(result.get());
    return std::make_unique<PqResult>(std::move(result));
  }

  std::vector<ResultPtr> RunTogether(std::span<const Query> queries) override {
    ++round_trips_;
    RequireSent(Pq().enter_pipeline(connection_.get()));
    std::vector<ResultPtr> results;
    std::optional<ServerError> error;
    for (const Query& query : queries) {
      const std::vector<const char*> values = Values(query);
      RequireSent(Pq().send(connection_.get(), query.sql.c_str(), static_cast<int>(values.size()),
                            nullptr, values.data(), nullptr, nullptr, 0));
    }
    RequireSent(Pq().sync(connection_.get()));
    for (std::size_t i = 0; i < queries.size(); ++i) {
      PgResultPtr result = NextResult();
      try {
        if (!error) {
          RequireSuccess(result.get());
          results.push_back(std::make_unique<PqResult>(std::move(result)));
        }
      } catch (const ServerError& first) {
        if (first.state().empty()) throw;
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
    ++round_trips_;
    const PgResultPtr result(Pq().execute(connection_.get(), sql.c_str()));
    RequireSuccess(result.get());
  }

  void BeginCopy(const std::string& sql) override {
    ++round_trips_;
    const PgResultPtr result(Pq().execute(connection_.get(), sql.c_str()));
    if (Pq().status(result.get()) != PGRES_COPY_IN) RequireSuccess(result.get());
  }

  void CopyText(std::string_view lines) override {
    RequireSent(Pq().put_copy(connection_.get(), lines.data(), static_cast<int>(lines.size())) == 1
                    ? 1
                    : 0);
  }

  std::int64_t EndCopy() override {
    ++round_trips_;
    RequireSent(Pq().end_copy(connection_.get(), nullptr) == 1 ? 1 : 0);
    const PgResultPtr result = NextResult();
    RequireSuccess(result.get());
    NextResult();  // null: the statement has ended
    const std::string rows = Pq().command_rows(result.get());
    return rows.empty() ? 0 : std::stoll(rows);
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
  static std::vector<const char*> Values(const Query& query) {
    std::vector<const char*> values;
    for (const auto& parameter : query.parameters) {
      values.push_back(parameter ? parameter->c_str() : nullptr);
    }
    return values;
  }

  PgResultPtr NextResult() { return PgResultPtr(Pq().next_result(connection_.get())); }

  [[noreturn]] void ThrowConnectionError() {
    broken_ = true;
    throw ServerError(server_error::kCallFailed,
                      "The connection to the server " + Address() +
                          " failed: " + OneLine(Pq().error(connection_.get())));
  }

  void RequireSent(int done) {
    if (done == 0) ThrowConnectionError();
  }

  void RequireSuccess(const PGresult* result) {
    const ExecStatusType status = Pq().status(result);
    constexpr std::array kGood = {PGRES_COMMAND_OK, PGRES_TUPLES_OK, PGRES_EMPTY_QUERY,
                                  PGRES_PIPELINE_SYNC};
    if (std::ranges::find(kGood, status) != kGood.end()) return;
    const char* const state =
        result == nullptr ? nullptr : Pq().error_field(result, PG_DIAG_SQLSTATE);
    if (state == nullptr || Pq().connection_status(connection_.get()) != CONNECTION_OK) {
      ThrowConnectionError();
    }
    const char* const words = Pq().error_field(result, PG_DIAG_MESSAGE_PRIMARY);
    throw ServerError(server_error::kCallFailed,
                      "The server " + Address() + " refused a statement: " + OneLine(words), state);
  }

  ConnectionPtr connection_;
  int round_trips_ = 0;
  bool broken_ = false;  // an answer is missing, so that the next one could be taken for it
};

}  // namespace

std::unique_ptr<Connection> Connection::Open(const std::string& service,
                                             std::chrono::seconds limit) {
  return std::make_unique<PqConnection>(service, limit);
}

}  // namespace tenora::server
