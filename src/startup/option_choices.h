// The words that an option of the command line can be given.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tenora {

// Those of an option with CLI::IsMember, in its order; empty for one that takes any text.
inline std::vector<std::string> OptionChoices(const CLI::Option& option) {
  const std::string type = option.get_type_name();  // "TEXT:{folder,printer,email}"
  const std::size_t start = type.find('{');
  const std::size_t end = type.find('}');
  if (start == std::string::npos || end == std::string::npos || end < start) return {};
  return CLI::detail::split(type.substr(start + 1, end - start - 1), ',');
}

}  // namespace tenora
