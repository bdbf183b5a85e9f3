#include "platform/server/rental_schema.h"

#include <string_view>

namespace tenora::server {

std::vector<ResultPtr> RunInSchema(Connection& connection, const std::string& service,
                                   std::span<const Query> queries) {
  std::vector<Query> all = {{.sql = "select number from rental.version", .parameters = {}}};
  all.insert(all.end(), queries.begin(), queries.end());
  std::vector<ResultPtr> results;
  try {
    results = connection.RunTogether(all);
  } catch (const ServerError& error) {
    constexpr std::string_view kNoSchema = "3F000", kNoTable = "42P01", kNoPermission = "42501";
    if (error.state() == kNoPermission) {
      throw ServerError(server_error::kConnectionFailed,
                        "This login has none of Tenora's roles in the database of the service '" +
                            service +
                            "': its administrator gives it one with 'tenora server "
                            "grant'",
                        error.state());
    }
    if (error.state() != kNoSchema && error.state() != kNoTable) throw;
    throw ServerError(server_error::kConnectionFailed,
                      "The database of the service '" + service +
                          "' is not one of Tenora's: its administrator makes it one with 'tenora "
                          "server init'");
  }
  if (results[0]->rows() != 1 || results[0]->Integer(0, 0) != kSchemaVersion) {
    throw ServerError(server_error::kConnectionFailed,
                      "The database of the service '" + service +
                          "' was made by another version of Tenora, which keeps it otherwise");
  }
  results.erase(results.begin());
  return results;
}

}  // namespace tenora::server
