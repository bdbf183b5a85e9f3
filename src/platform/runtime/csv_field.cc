#include "platform/runtime/csv_field.h"

#include <string_view>

#include "platform/runtime/text.h"

namespace tenora {

std::string CsvField(const std::string& text) {
  if (text.find_first_of("\",\r\n") == std::string::npos) return text;
  return '"' + ReplaceAll(text, "\"", "\"\"") + '"';
}

std::string NoFormula(const std::string& text) {
  constexpr std::string_view kBeginsFormula = "=+-@\t\r\n";
  const bool formula = !text.empty() && kBeginsFormula.find(text[0]) != std::string_view::npos;
  return formula ? "'" + text : text;
}

}  // namespace tenora
