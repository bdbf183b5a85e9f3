// Where a branch's rows are: "service=NAME branch=North". The service is libpq's; a name with
// blanks stands in single quotes, one of these and a backslash have a backslash before them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tenora::server {

struct BranchLocation {
  std::string service;
  std::string branch;

  bool operator==(const BranchLocation&) const = default;
  std::string ToText() const;
};

// Whether the text is meant to be such a location rather than a file's path.
bool IsBranchLocation(std::string_view text);
// Raises 3151 for a text that is none, saying what is wrong with it.
BranchLocation ReadBranchLocation(std::string_view text);

}  // namespace tenora::server
