#include "support/postgres_server.h"

#include <fstream>
#include <stdexcept>

#include "platform/runtime/text.h"

namespace tenora::test {
namespace {

std::string Done(const ProcessResult& result) {
  if (result.status != 0) throw std::runtime_error("PostgreSQL: " + result.errors);
  return result.output;
}

std::string Cluster(const std::vector<std::string>& arguments) {
  std::vector<std::string> call = {(SourceDir() / "scripts/private_postgres.sh").string()};
  call.insert(call.end(), arguments.begin(), arguments.end());
  return std::string(TrimBlanks(Split(Done(RunProcess(call)) + "\n", "\n").front()));
}

}  // namespace

PostgresServer& PostgresServer::Get() {
  static PostgresServer server;
  return server;
}

PostgresServer::PostgresServer() : folder_(Cluster({"start"})) {}
PostgresServer::~PostgresServer() { Cluster({"stop", folder_}); }

void PostgresServer::Crash() { Cluster({"crash", folder_}); }
void PostgresServer::Restart() { Cluster({"restart", folder_}); }

void PostgresServer::AddService(const std::string& service, const std::string& database,
                                const std::string& login, const std::string& socket_folder) {
  std::ofstream(services_ / "services", std::ios::app)
      << "[" << service << "]\nhost=" << (socket_folder.empty() ? folder_ : socket_folder)
      << "\ndbname=" << database << "\nuser=" << login << "\n";
}

std::string PostgresServer::Run(const std::string& database, const std::string& sql) {
  return Done(RunProcess(
      {"psql", "-XAtq", "-v", "ON_ERROR_STOP=1", "-h", folder_, "-U", "tenora", database}, {},
      sql));
}

void PostgresServer::MakeDatabase(const std::string& name) {
  Run("postgres", "drop database if exists \"" + name + "\" with (force)");
  Run("postgres", "create database \"" + name + "\"");
  for (const char* const schema : {"server_schema.sql", "queue_schema.sql"}) {
    Done(RunProcess({"psql", "-Xq", "-v", "ON_ERROR_STOP=1", "-h", folder_, "-U", "tenora", "-f",
                     (SourceDir() / "src/data" / schema).string(), name}));
  }
  AddService(name, name, "tenora");
}

void PostgresServer::MakeLogin(const std::string& database, const std::string& login,
                               const std::string& role) {
  Run(database,
      "drop role if exists \"" + login + "\"; create role \"" + login + "\" login in role " + role);
  AddService(database + "-" + login, database, login);
}

}  // namespace tenora::test
