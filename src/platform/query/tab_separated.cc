#include <ostream>

#include "platform/query/engine.h"

namespace tenora::query {
namespace {

void PrintEscaped(std::string_view text, std::ostream& out) {
  for (const char c : text) {
    switch (c) {
      case '\t':
        out << "\\t";
        break;
      case '\n':
        out << "\\n";
        break;
      case '\r':
        out << "\\r";
        break;
      case '\\':
        out << "\\\\";
        break;
      default:
        out.put(c);
    }
  }
}

void PrintHexadecimal(const std::vector<std::byte>& bytes, std::ostream& out) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const std::byte byte : bytes) {
    const auto number = std::to_integer<std::size_t>(byte);
    out.put(kDigits[number >> 4]);
    out.put(kDigits[number & 0xF]);
  }
}

void PrintValue(const Value& value, std::ostream& out) {
  if (const auto* boolean = std::get_if<bool>(&value)) {
    out << (*boolean ? "-1" : "0");
  } else if (const auto* bytes = std::get_if<std::vector<std::byte>>(&value)) {
    PrintHexadecimal(*bytes, out);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    PrintEscaped(*text, out);
  } else {
    out << TextOf(value);
  }
}

}  // namespace

void PrintTabSeparated(Recordset& rows, std::ostream& out) {
  const std::vector<std::string>& names = rows.FieldNames();
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) out.put('\t');
    PrintEscaped(names[i], out);
  }
  out.put('\n');
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (i > 0) out.put('\t');
      PrintValue(rows.Field(i), out);
    }
    out.put('\n');
  }
}

}  // namespace tenora::query
