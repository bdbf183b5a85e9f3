// The mdbtools programs and the mdb-reader package as independent readers.
#pragma once

#include <string>

#include "platform/access/database_file.h"

namespace tenora::test {

bool HasMdbTools();
// Why mdb-reader cannot be run; empty when it can.
std::string WhyNoMdbReader();

// Expect every field of a table to equal what the other reader gives. Dates before 1900, which
// mdb-export cannot print, and types that one of them does not support are skipped.
void ExpectSameAsMdbExport(const access::DatabaseFile& database, const access::Table& table);
void ExpectSameAsMdbReader(const access::DatabaseFile& database, const access::Table& table);

}  // namespace tenora::test
