#include "platform/query/sql/statement_error.h"

namespace tenora::query {
namespace {

constexpr std::size_t kShownStatement = 2000;  // bytes; enough for any of the program's statements

}  // namespace

RuntimeError StatementError(int number, std::string_view description, std::string_view statement) {
  std::string text(description);
  if (!text.ends_with('.')) text += '.';
  text += " Statement: ";
  if (statement.size() <= kShownStatement) {
    text += statement;
  } else {
    std::size_t end = kShownStatement;
    while (end > 0 && (static_cast<unsigned char>(statement[end]) & 0xC0) == 0x80) --end;
    text.append(statement.substr(0, end)).append("…");
  }
  return RuntimeError(number, text, "DAO.Database");
}

std::string TooFewParameters(std::span<const std::string> unknown_names) {
  std::string names;
  for (const std::string& name : unknown_names) names += (names.empty() ? "" : ", ") + name;
  return "Too few parameters. Expected " + std::to_string(unknown_names.size()) +
         ". Unknown: " + names + ".";
}

}  // namespace tenora::query
