#include "rental/reload.h"

namespace tenora {

bool ReloadRentalData(Session& session) {
  Database& database = session.database;
  const std::size_t errors_before = database.ErrorsReported();
  database.OpenDatabase();
  if (!database.IsOpen()) return false;
  try {
    session.caches.CacheTenants(database);
    session.caches.CacheAccountCodes(database);
    session.caches.CacheOwners(database);
    session.caches.CacheProperties(database);
    session.options.LoadOptions();
  } catch (...) {
    database.CloseDatabase();
    throw;
  }
  database.CloseDatabase();
  return database.ErrorsReported() == errors_before;
}

}  // namespace tenora
