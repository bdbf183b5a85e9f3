#include "support/sample_rows.h"

#include <stdexcept>

#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::test {

std::vector<SampleRow> SampleTable(const std::string& table) {
  const ProcessResult exported =
      RunProcess({"mdb-export", "-Q", "-d", "\x1F", "-R", "\x1E", "-T", "%Y-%m-%d", "-D",
                  "%Y-%m-%d", SampleDatabase().string(), table});
  if (exported.status != 0) throw std::runtime_error("mdb-export: " + exported.errors);
  // The header ends with a line feed in some versions and with the row separator in others.
  const std::size_t head = exported.output.find_first_of("\n\x1E");
  const std::vector<std::string> names = Split(exported.output.substr(0, head), "\x1F");
  std::vector<std::string> lines = Split(exported.output.substr(head + 1), "\x1E");
  lines.pop_back();  // behind the last row
  std::vector<SampleRow> rows;
  for (const std::string& line : lines) {
    const std::vector<std::string> fields = Split(line, "\x1F");
    SampleRow row;
    for (std::size_t column = 0; column < names.size(); ++column) {
      row[names[column]] = fields.at(column);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace tenora::test
