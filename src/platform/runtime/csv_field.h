// Fields of comma-separated values, as RFC 4180 has them.
#pragma once

#include <string>

namespace tenora {

// In quotes where it needs them.
std::string CsvField(const std::string& text);

// For lists that people open in a spreadsheet: with an apostrophe in front where it would be taken
// for a formula, which could send the sheet elsewhere.
std::string NoFormula(const std::string& text);

}  // namespace tenora
