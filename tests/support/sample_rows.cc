#include "sample_rows.h"

#include <stdexcept>

#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::test {

std::vector<SampleRow> SampleTable(const std::string& table) {
  const ProcessResult exported =
      RunProcess({"mdb-export", "-Q", "-d", "\x1F", "-R", "\x1E", "-T", "%Y-%m-%d", "-D",
                  "%Y-%m-%d", SampleDatabase().string(), table});
  if (exported.status != 0) throw std::runtime_error("mdb-export: " + exported.errors);
  std::vector<std::string> lines = Split(exported.output, "\x1E");
  lines.pop_back();  // behind the last row
  const std::vector<std::string> names = Split(lines.at(0), "\x1F");
  std::vector<SampleRow> rows;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::vector<std::string> fields = Split(lines[i], "\x1F");
    SampleRow row;
    for (std::size_t column = 0; column < names.size(); ++column) {
      row[names[column]] = fields.at(column);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace tenora::test
