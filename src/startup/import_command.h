// `tenora import`: takes documents of word processors into the template library.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tenora {

struct ImportRequest {
  std::vector<std::string> documents;
  std::string kind = "tenant";  // "tenant", "owner" or "cheque"
  std::string name;             // of the template, with one document; empty: the document's
};

// Prints the file, the repairs and the findings of each, and to `errors` what could not be
// imported. True when all were imported; findings do not count.
bool ImportTemplates(const ImportRequest& request, std::ostream& output, std::ostream& errors);

}  // namespace tenora
