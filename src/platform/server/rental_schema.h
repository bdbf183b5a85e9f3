// The schema "rental" of a database that Tenora keeps branches in.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/server/server_connection.h"

namespace tenora::server {

// Of rental.version.
inline constexpr int kSchemaVersion = 1;

// Runs the queries in one round trip, after having looked whether the database has the schema in
// this program's version; raises 3151 where it has not.
std::vector<ResultPtr> RunInSchema(Connection& connection, const std::string& service,
                                   std::span<const Query> queries);

}  // namespace tenora::server
