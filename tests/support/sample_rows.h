// The sample agency's tables as an independent reader sees them.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tenora::test {

using SampleRow = std::map<std::string, std::string>;

// Every row of a table by column name, read by mdb-export; nulls are empty, dates "2026-11-21".
std::vector<SampleRow> SampleTable(const std::string& table);

}  // namespace tenora::test
