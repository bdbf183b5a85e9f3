// A real PostgreSQL server of the tests' own, which only they can reach.
#pragma once

#include <filesystem>
#include <string>

#include "support/environment.h"
#include "support/test_files.h"

namespace tenora::test {

class PostgresServer {
 public:
  // The server of this test program, started at the first call and stopped with the program.
  static PostgresServer& Get();

  ~PostgresServer();
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;

  // Of the cluster and its socket.
  const std::string& folder() const { return folder_; }
  // Makes a database with the program's schema, in place of what had its name, and a service of
  // that name for its owner.
  void MakeDatabase(const std::string& name);
  // A login that has this role ("tenora_reader"), and the service "DATABASE-LOGIN" for it.
  void MakeLogin(const std::string& database, const std::string& login, const std::string& role);
  // The service of that name: a database and who logs in there, by the server's own socket or one
  // in another folder.
  void AddService(const std::string& service, const std::string& database, const std::string& login,
                  const std::string& socket_folder = {});
  // Runs statements as the owner; returns what they print, a line a row, fields separated by "|".
  std::string Run(const std::string& database, const std::string& sql);
  // Stops as hard as a power cut, until Restart.
  void Crash();
  // Stops as hard as a power cut and starts again.
  void Restart();

 private:
  PostgresServer();

  std::string folder_;
  ScratchFolder services_;
  Environment service_file_{{"PGSERVICEFILE", (services_ / "services").string()},
                            {"PGPASSFILE", (services_ / "passwords").string()}};
};

}  // namespace tenora::test
