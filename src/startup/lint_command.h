// `tenora lint`: reports what would go wrong with templates.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tenora {

struct LintRequest {
  // Paths of files, or names of templates in the data folder.
  std::vector<std::string> templates;
  bool all = false;      // every template of the data folder besides
  std::string kind;      // "tenant", "owner" or "cheque"; empty: by the folder of each
  std::string database;  // whose custom fields are compared with; empty: the agency's own
};

// Prints the findings one a line, and to `errors` the templates that could not be read. True when
// there were neither. Raises the error of a database that was named and cannot be read.
bool LintTemplates(const LintRequest& request, std::ostream& output, std::ostream& errors);

}  // namespace tenora
