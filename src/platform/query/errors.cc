#include "platform/query/errors.h"

#include <sqlite3.h>

namespace tenora::query {
namespace {

constexpr std::size_t kShownStatement = 2000;  // bytes; enough for any statement of the system

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

RuntimeError RecordsetError(int number, std::string_view description) {
  return RuntimeError(number, std::string(description), "DAO.Recordset");
}

void RequireDone(int sqlite_status) {
  if (sqlite_status == SQLITE_OK) return;
  throw RuntimeError(
      engine_error::kOutOfResources,
      std::string("System resource exceeded (") + sqlite3_errstr(sqlite_status) + ").",
      "DAO.Database");
}

}  // namespace tenora::query
