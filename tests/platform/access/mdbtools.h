// The mdbtools programs as an independent reader.
#pragma once

#include <filesystem>

#include "platform/access/database_file.h"

namespace tenora::test {

bool HasMdbTools();

// Expects every field of a table to be what mdb-export says. Dates before 1900 are passed by, which
// it cannot print, and the types it does not know.
void ExpectSameAsMdbExport(const access::DatabaseFile& database, const access::Table& table);

}  // namespace tenora::test
