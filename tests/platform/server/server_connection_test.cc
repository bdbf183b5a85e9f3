// A server that answers, refuses, falls silent or goes away.

#include "platform/server/server_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <thread>

#include "platform/server/server_transaction.h"
#include "support/postgres_server.h"
#include "support/test_files.h"

namespace tenora::server {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::PostgresServer;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr seconds kNoLimit{0}, kLimit{50};
constexpr const char* kSocket = ".s.PGSQL.5432";

// Stands between a client and the server, until it stops forwarding, as a cut cable does.
class Proxy {
 public:
  explicit Proxy(std::filesystem::path server) : server_(std::move(server)) {
    const sockaddr_un address = AddressOf(folder_ / kSocket);
    ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::listen(listener_, 8);
    ::pipe(wake_.data());
    thread_ = std::thread([this] { Forward(); });
  }
  ~Proxy() {
    EndThread();
    for (const int socket : sockets_) ::close(socket);
    for (const int socket : {listener_, wake_[0], wake_[1]}) ::close(socket);
  }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  std::string folder() const { return folder_.path().string(); }
  // From now on nothing passes; connections are accepted all the same.
  void Hold() { EndThread(); }

 private:
  static sockaddr_un AddressOf(const std::filesystem::path& path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
  }

  void EndThread() {
    if (!thread_.joinable()) return;
    EXPECT_EQ(::write(wake_[1], "x", 1), 1);
    thread_.join();
  }

  void Accept() {
    const sockaddr_un address = AddressOf(server_);
    sockets_.push_back(::accept(listener_, nullptr, nullptr));
    sockets_.push_back(::socket(AF_UNIX, SOCK_STREAM, 0));
    ::connect(sockets_.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }

  void Forward() {
    std::array<char, 65536> block;
    for (;;) {
      std::vector<pollfd> waiting = {{wake_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
      for (const int socket : sockets_) waiting.push_back({socket, POLLIN, 0});
      ::poll(waiting.data(), waiting.size(), -1);
      if (waiting[0].revents != 0) return;
      for (std::size_t i = 2; i < waiting.size(); ++i) {
        if (waiting[i].revents == 0) continue;
        const std::size_t from = i - 2, to = from ^ 1U;
        const ssize_t length = ::read(sockets_[from], block.data(), block.size());
        if (length <= 0) ::shutdown(sockets_[to], SHUT_WR);
        for (ssize_t sent = 0; sent < length;) {
          sent += std::max<ssize_t>(
              0, ::send(sockets_[to], block.data() + sent, length - sent, MSG_NOSIGNAL));
        }
      }
      if (waiting[1].revents != 0) Accept();
    }
  }

  const std::filesystem::path server_;
  test::ScratchFolder folder_;
  const int listener_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
  std::array<int, 2> wake_{};
  std::vector<int> sockets_;  // a client's and the server's, in turns
  std::thread thread_;
};

// What a request raised.
struct Raised {
  int number = 0;
  ServerFailure failure = ServerFailure::kRefused;
  std::string state, text = "nothing";
};

Raised RaisedBy(const std::function<void()>& request) {
  try {
    request();
  } catch (const ServerError& error) {
    return {error.number(), error.failure(), error.state(), std::string(error.description())};
  }
  return {};
}

class ServerConnectionTest : public testing::Test {
 protected:
  void SetUp() override {
    server_.MakeDatabase("rents");
    server_.AddService(through_, "rents", "tenora", proxy_.folder());
  }

  PostgresServer& server_ = PostgresServer::Get();
  Proxy proxy_{std::filesystem::path(server_.folder()) / kSocket};
  // A service through it, which other tests' proxies have not had.
  const std::string through_ = std::filesystem::path(proxy_.folder()).filename();
};

struct Request {
  std::string statement;
  std::function<void(Connection&)> make;
};

const std::vector<Request>& Requests() {
  static const std::vector<Request> kRequests = {
      {"select 1", [](Connection& connection) { connection.Run("select 1"); }},
      {"select 2",
       [](Connection& connection) {
         const Query queries[] = {{.sql = "select 2", .parameters = {}}};
         connection.RunTogether(queries);
       }},
      {"select 3", [](Connection& connection) { connection.RunScript("select 3"); }},
      {"copy arriving from stdin",
       [](Connection& connection) { connection.BeginCopy("copy arriving from stdin"); }}};
  return kRequests;
}

TEST_F(ServerConnectionTest, GivesUpASilentServer) {
  const Waiting brief{.silence = milliseconds(500)};
  const auto expect_lost = [](const Raised& raised, Connection& connection,
                              const std::string& statement) {
    EXPECT_EQ(raised.number, 3146);
    EXPECT_EQ(raised.failure, ServerFailure::kLost);
    EXPECT_THAT(raised.text, HasSubstr(":5432 was silent for 0.5 s while it ran '" + statement));
    EXPECT_TRUE(connection.IsBroken());
    EXPECT_EQ(RaisedBy([&] { connection.Run("select 1"); }).failure, ServerFailure::kNotConnected);
  };
  std::vector<std::unique_ptr<Connection>> connections;
  for (std::size_t i = 0; i < Requests().size(); ++i) {
    connections.push_back(Connection::Open(through_, kLimit, brief));
  }
  const auto copying = Connection::Open(through_, kLimit, brief);
  const auto unlimited = Connection::Open(through_, kNoLimit, brief);
  copying->RunScript("create temporary table arriving (line text)");
  copying->BeginCopy("copy arriving from stdin");
  proxy_.Hold();
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Request& request = Requests()[i];
    expect_lost(RaisedBy([&] { request.make(*connections[i]); }), *connections[i],
                request.statement);
  }
  expect_lost(RaisedBy([&] {
                for (int i = 0; i < 1000; ++i) copying->CopyText(std::string(10000, 'x') + "\n");
              }),
              *copying, "copy arriving");
  expect_lost(RaisedBy([&] { unlimited->Run("select 1"); }), *unlimited, "select 1");
  const Raised unconnected = RaisedBy([&] { Connection::Open(through_, kLimit, brief); });
  EXPECT_EQ(unconnected.number, 3151);
  EXPECT_EQ(unconnected.failure, ServerFailure::kNotConnected);
  EXPECT_THAT(unconnected.text, HasSubstr("service '" + through_ + "' cannot be used: " +
                                          proxy_.folder() + ":5432 did not answer for 0.5 s"));
}

TEST_F(ServerConnectionTest, WaitsForASlowStatementWithoutALimit) {
  const Waiting brief{.silence = milliseconds(500)};
  const auto slow = [&](seconds limit) {
    return RaisedBy([&] { Connection::Open(through_, limit, brief)->Run("select pg_sleep(1.2)"); })
        .text;
  };
  EXPECT_EQ(slow(kNoLimit), "nothing");
  EXPECT_THAT(slow(kLimit), HasSubstr("was silent for 0.5 s while it ran 'select pg_sleep(1.2)'"));
}

TEST_F(ServerConnectionTest, StopsWaitingWhenAsked) {
  std::atomic<bool> stop = false;
  const Waiting waiting{.stop_asked = [&] { return stop.load(); }, .patience = milliseconds(100)};
  std::vector<std::unique_ptr<Connection>> connections;
  for (std::size_t i = 0; i <= Requests().size(); ++i) {
    connections.push_back(Connection::Open(through_, kLimit, waiting));
  }
  stop = true;
  EXPECT_EQ(RaisedBy([&] { connections.back()->Run("select 1"); }).text, "nothing")
      << "what is answered at once is taken";
  proxy_.Hold();
  for (std::size_t i = 0; i < Requests().size(); ++i) {
    const Request& request = Requests()[i];
    const Raised raised = RaisedBy([&] { request.make(*connections[i]); });
    EXPECT_EQ(raised.number, 32755);
    EXPECT_EQ(raised.failure, ServerFailure::kStopped);
    EXPECT_THAT(raised.text, HasSubstr("was stopped while it ran '" + request.statement));
    EXPECT_TRUE(connections[i]->IsBroken());
  }
  EXPECT_EQ(RaisedBy([&] { Connection::Open(through_, kLimit, waiting); }).failure,
            ServerFailure::kStopped);
}

TEST_F(ServerConnectionTest, TellsALostConnectionFromARefusal) {
  const auto connection = Connection::Open("rents", kLimit);
  const Raised refused = RaisedBy([&] { connection->Run("select 1 / 0"); });
  EXPECT_EQ(refused.failure, ServerFailure::kRefused);
  EXPECT_EQ(refused.state, "22012");
  EXPECT_FALSE(connection->IsBroken());

  connection->RunScript("create temporary table done (number int)");
  {
    ServerTransaction abandoned(*connection);
    connection->Run("insert into done values (1)");
  }
  ServerTransaction failed(*connection);
  connection->Run("insert into done values (2)");
  RaisedBy([&] { connection->Run("select 1 / 0"); });
  EXPECT_EQ(RaisedBy([&] { failed.Commit(); }).state, "25P02");
  ServerTransaction kept(*connection);
  connection->Run("insert into done values (3)");
  kept.Commit();
  EXPECT_EQ(connection->Run("select string_agg(number::text, ' ') from done")->Text(0, 0), "3");

  // The rows' sender has failed in the middle.
  connection->BeginCopy("copy done from stdin");
  connection->CopyText("4\n");
  EXPECT_EQ(connection->Run("select count(*) from done")->Integer(0, 0), 1);

  const Raised ended = RaisedBy(
      [&] { connection->Run("select pg_terminate_backend(pg_backend_pid()), pg_sleep(9)"); });
  EXPECT_EQ(ended.failure, ServerFailure::kLost);
  EXPECT_THAT(ended.text, HasSubstr("terminating connection"));
  EXPECT_TRUE(connection->IsBroken());
  EXPECT_EQ(RaisedBy([] { Connection::Open("nowhere", kLimit); }).failure,
            ServerFailure::kNotConnected);
}

TEST_F(ServerConnectionTest, CarriesTextsAndBytesUnchanged) {
  const auto connection = Connection::Open("rents", kLimit);
  std::string bytes("\\x00\\\0\n'é", 9);
  for (int i = 0; i < 20; ++i) bytes += bytes;
  const std::string text = "\\ '\"\t é𝄞";
  const Query query{.sql = "select $1, $2, $3::int + 1, $4::text, length($2)",
                    .parameters = {text, Bytes{bytes}, "41", std::nullopt}};
  const Query queries[] = {query, query};
  const auto results = connection->RunTogether(queries);
  ASSERT_EQ(results.size(), 2U);
  for (const ResultPtr& result : results) {
    EXPECT_EQ(result->Text(0, 0), text);
    EXPECT_TRUE(result->BytesOf(0, 1) == bytes);
    EXPECT_EQ(result->Integer(0, 2), 42);
    EXPECT_TRUE(result->IsNull(0, 3));
    EXPECT_EQ(result->BytesOf(0, 3), "");
    EXPECT_EQ(result->Integer(0, 4), static_cast<std::int64_t>(bytes.size()));
    EXPECT_EQ(RaisedBy([&] { result->BytesOf(0, 0); }).number, 3146);
  }
}

TEST_F(ServerConnectionTest, WaitsForNotices) {
  std::atomic<bool> stop = false;
  const auto listening =
      Connection::Open(through_, kLimit, {.stop_asked = [&] { return stop.load(); }});
  const auto speaking = Connection::Open("rents", kLimit);
  listening->Run("listen letters");
  EXPECT_TRUE(listening->WaitForNotices(milliseconds(20)).empty());

  const auto told = [&] {
    std::vector<std::string> texts;
    for (const Notice& notice : listening->WaitForNotices(seconds(60))) {
      texts.push_back(notice.channel + " " + notice.payload);
    }
    return texts;
  };
  speaking->Run("select pg_notify('letters', 'run 7'), pg_notify('else', '')");
  EXPECT_THAT(told(), ElementsAre("letters run 7"));
  // One that came with the answer to a statement.
  speaking->Run("notify letters");
  listening->Run("select 1");
  EXPECT_THAT(told(), ElementsAre("letters "));

  stop = true;
  EXPECT_THAT(told(), ElementsAre());
  EXPECT_FALSE(listening->IsBroken());
  stop = false;
  speaking->Run("select pg_terminate_backend(pid) from pg_stat_activity where query = 'select 1'");
  EXPECT_EQ(RaisedBy([&] { told(); }).failure, ServerFailure::kLost);
}

}  // namespace
}  // namespace tenora::server
