// The manual page tenora(1), made of what --help is made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "startup/own_parser.h"

namespace tenora {

// The word that prints the page when the program is installed; the help does not list it.
inline constexpr std::string_view kManualPageWord = "manual-page";

// Source for man(1) in UTF-8: the parser's commands and options, those of `sections` after them.
std::string ManualPage(const CLI::App& app, const std::vector<HelpSection>& sections);

}  // namespace tenora
