// Statements over the sample agency, their rows as plain text and their errors.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/query/engine.h"
#include "platform/runtime/error.h"

namespace tenora::query {

// Each row as one text, fields separated by "|": null as "null", booleans as "True" and "False".
std::vector<std::string> RowsOf(EngineDatabase& database, std::string_view sql);

// A workspace whose clock stands at 2026-11-21 09:30:00, and the sample agency opened in it.
class SampleAgency {
 public:
  SampleAgency();
  EngineDatabase& database() { return *database_; }
  std::vector<std::string> Rows(std::string_view sql) { return RowsOf(*database_, sql); }
  // The first field of the only row.
  Value Single(std::string_view sql);
  // The number of the error that the statement raises, 0 when it raises none.
  int ErrorNumber(std::string_view sql);
  RuntimeError Error(std::string_view sql);

 private:
  std::unique_ptr<Workspace> workspace_;
  std::unique_ptr<EngineDatabase> database_;
};

}  // namespace tenora::query
