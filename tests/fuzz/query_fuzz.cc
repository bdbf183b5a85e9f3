// Any bytes as a statement: rows or an error, never a crash or a hang.

#include <cstdint>
#include <string_view>

#include "platform/query/sql/lexer.h"
#include "platform/query/sql/parser.h"
#include "platform/query/translate/translator.h"
#include "platform/runtime/error.h"

namespace {

class NoTables : public tenora::query::Catalogue {
 public:
  Entry FindTable(std::string_view) override { return {}; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view statement(reinterpret_cast<const char*>(data), size);
  try {
    NoTables tables;
    const auto tokens = tenora::query::ReadTokens(statement);
    tenora::query::Translate(*tenora::query::ParseSelect(statement, tokens), statement, tables);
  } catch (const tenora::RuntimeError&) {
  }
  return 0;
}
