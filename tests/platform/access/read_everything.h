// Reads everything in a database, for tests and the fuzz target.
#pragma once

#include <cstddef>
#include <string>

#include "platform/access/database_file.h"
#include "platform/runtime/error.h"

namespace tenora::test {

struct ReadCounts {
  std::size_t rows = 0;
  std::size_t fields = 0;
  std::size_t found = 0;    // through indexes
  std::string first_error;  // reading continues after it
};

// Stops after `most_rows`, so that a small crafted file cannot cause endless work.
inline ReadCounts ReadEverything(const access::DatabaseFile& database, std::size_t most_rows) {
  ReadCounts counts;
  const auto attempt = [&](auto step) {
    try {
      return step();
    } catch (const RuntimeError& error) {
      if (counts.first_error.empty()) counts.first_error = ErrorText(error);
      return decltype(step())();
    }
  };
  for (const std::string& name : database.TableNames()) {
    const access::Table* table = attempt([&] { return database.FindTable(name); });
    if (table == nullptr) continue;
    const auto rows = attempt([&] { return table->Rows(); });
    while (rows != nullptr && counts.rows < most_rows && attempt([&] { return rows->Next(); })) {
      ++counts.rows;
      for (std::size_t i = 0; i < table->columns().size(); ++i) {
        attempt([&] { return rows->Field(i); });
        ++counts.fields;
      }
    }
    for (std::size_t i = 0; i < table->columns().size(); ++i) {
      const auto path = attempt([&] { return table->FindIndex({{i}}); });
      const auto first = attempt([&] { return table->Rows(); });
      if (!path || first == nullptr || !attempt([&] { return first->Next(); })) continue;
      const Value value = attempt([&] { return first->Field(i); });
      if (IsNull(value)) continue;
      const auto found = attempt([&] { return table->FindRows(*path, {&value, 1}, 50); });
      while (found != nullptr && attempt([&] { return found->Next(); })) ++counts.found;
    }
  }
  return counts;
}

}  // namespace tenora::test
