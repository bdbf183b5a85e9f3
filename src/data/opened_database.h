// Keeps the database open for as long as it lives.
#pragma once

#include "data/database.h"

namespace tenora {

class OpenedDatabase {
 public:
  explicit OpenedDatabase(Database& database) : database_(database) { database_.OpenDatabase(); }
  OpenedDatabase(const OpenedDatabase&) = delete;
  OpenedDatabase& operator=(const OpenedDatabase&) = delete;
  ~OpenedDatabase() { database_.CloseDatabase(); }

 private:
  Database& database_;
};

}  // namespace tenora
