#include "rental/reload.h"

#include "data/opened_database.h"

namespace tenora {

bool ReloadRentalData(Session& session) {
  Database& database = session.database;
  const std::size_t errors_before = database.ErrorsReported();
  const OpenedDatabase opened(database);
  // The failure has been shown; every load below would only fail in its turn.
  if (!database.IsOpen()) return false;
  session.caches.CacheTenants(database);
  session.caches.CacheAccountCodes(database);
  session.caches.CacheOwners(database);
  session.caches.CacheProperties(database);
  session.options.LoadOptions();
  return database.ErrorsReported() == errors_before;
}

}  // namespace tenora
