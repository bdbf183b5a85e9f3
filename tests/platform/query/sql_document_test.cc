// The statements of docs/sql.md give the results that stand beside them.
#include <gtest/gtest.h>

#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

// The text between the backquotes that a cell begins and ends with; empty for other cells.
std::string Code(std::string_view cell) {
  cell = TrimBlanks(cell);
  if (cell.size() < 3 || !cell.starts_with('`') || !cell.ends_with('`')) return {};
  return std::string(cell.substr(1, cell.size() - 2));
}

std::string ResultOf(EngineDatabase& database, const std::string& statement) {
  std::string result;
  const auto error = test::RaisedBy([&] {
    const auto begins = [&](const char* word) { return StartsWithNoCase(statement, word); };
    if (begins("insert ") || begins("update ") || begins("delete ") || begins("create ")) {
      const std::int64_t rows = database.Execute(statement);
      result = std::to_string(rows) + (rows == 1 ? " row" : " rows");
      return;
    }
    for (const std::string& row : RowsOf(database, statement))
      result += (result.empty() ? "" : "; ") + ReplaceAll(row, "|", ", ");
  });
  if (!error) return result;
  const std::string description(error->description());
  return std::to_string(error->number()) + " " + description;
}

TEST(SqlDocument, ItsStatementsGiveTheResultsBesideThem) {
  const test::ScratchFolder folder;
  const std::filesystem::path path = folder / "property.mdb";
  std::filesystem::copy_file(test::SampleDatabase(), path);
  const auto database =
      Workspace::Create([] { return Date::FromCalendar(2026, 11, 21, 9, 30); })->OpenDatabase(path);
  int statements = 0;
  for (const std::string& line : Split(ReadWholeFile(test::SourceDir() / "docs/sql.md"), "\n")) {
    const std::vector<std::string> cells = Split(line, "|");
    if (cells.size() != 4) continue;
    const std::string statement = Code(cells[1]), expected = Code(cells[2]);
    if (statement.find(' ') == std::string::npos || expected.empty()) continue;
    const std::string result = ResultOf(*database, statement);
    const bool refused = IsDigit(expected[0]) && result.find(" Statement: ") != std::string::npos;
    EXPECT_EQ(refused ? result.substr(0, expected.size()) : result, expected) << statement;
    ++statements;
  }
  EXPECT_GE(statements, 35);
}

}  // namespace
}  // namespace tenora::query
