#include "platform/server/branch_location.h"

#include <algorithm>

#include "platform/runtime/text.h"
#include "platform/server/server_connection.h"

namespace tenora::server {
namespace {

constexpr std::string_view kService = "service", kBranch = "branch";

std::string QuotedWhereNeeded(const std::string& name) {
  if (name.find_first_of(" '\\") == std::string::npos && !name.empty()) return name;
  std::string quoted = "'";
  for (const char c : name) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

[[noreturn]] void Refuse(std::string_view text, const std::string& why) {
  throw ServerError(server_error::kConnectionFailed,
                    "The database location '" + std::string(text) + "' " + why +
                        ". It is written service=NAME branch=NAME.");
}

// Takes a word and the equals sign behind it.
std::string TakeKeyword(std::string_view& rest) {
  const std::size_t equals = rest.find('=');
  const std::string_view word = rest.substr(0, std::min(equals, rest.size()));
  rest.remove_prefix(equals == std::string_view::npos ? rest.size() : equals + 1);
  return std::string(TrimBlanks(word));
}

// Takes a value; none where its quotes do not close.
std::optional<std::string> TakeValue(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  const bool quoted = rest.starts_with('\'');
  if (quoted) rest.remove_prefix(1);
  std::string value;
  while (!rest.empty() && (quoted ? rest.front() != '\'' : rest.front() != ' ')) {
    if (rest.front() == '\\' && rest.size() > 1) rest.remove_prefix(1);
    value += rest.front();
    rest.remove_prefix(1);
  }
  if (quoted && rest.empty()) return std::nullopt;
  if (quoted) rest.remove_prefix(1);
  return value;
}

}  // namespace

std::string BranchLocation::ToText() const {
  return "service=" + QuotedWhereNeeded(service) + " branch=" + QuotedWhereNeeded(branch);
}

bool IsBranchLocation(std::string_view text) {
  text = TrimBlanks(text);
  return StartsWithNoCase(text, kService) &&
         TrimBlanks(text.substr(kService.size())).starts_with('=');
}

BranchLocation ReadBranchLocation(std::string_view text) {
  BranchLocation location;
  for (std::string_view rest = TrimBlanks(text); !rest.empty(); rest = TrimBlanks(rest)) {
    const std::string keyword = TakeKeyword(rest);
    const std::optional<std::string> value = TakeValue(rest);
    if (!value) Refuse(text, "has a quotation mark that is not closed");
    const bool service = EqualsNoCase(keyword, kService);
    if (!service && !EqualsNoCase(keyword, kBranch)) {
      Refuse(text, "has '" + keyword +
                       "', which is neither service nor branch; a name with blanks is written in "
                       "single quotes, branch='North Shore'");
    }
    (service ? location.service : location.branch) = *value;
  }
  if (location.service.empty()) Refuse(text, "names no service");
  if (location.branch.empty()) Refuse(text, "names no branch");
  return location;
}

}  // namespace tenora::server
