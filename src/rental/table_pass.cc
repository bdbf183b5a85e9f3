#include "rental/table_pass.h"

#include <utility>

#include "platform/runtime/error.h"

namespace tenora {

TablePass::TablePass(Database& database, std::span<const std::string> codes, std::stop_token stop)
    : database_(database), stop_(std::move(stop)), numbers_(database.Texts()) {
  numbers_.reserve(codes.size());
  for (std::size_t i = 0; i < codes.size(); ++i) numbers_.emplace(codes[i], i);
}

void TablePass::Each(const std::string& sql, const UseRow& use) {
  if (Stopped()) return;
  const std::size_t errors_before = database_.ErrorsReported();
  RecordsetPtr rows;
  database_.CreateSet(rows, sql, query::kForwardOnly, query::kReadOnly);
  // Rows of one code often follow one another.
  std::string code;
  const std::size_t unknown = numbers_.size();
  std::size_t number = unknown;
  bool first_row = true;
  for (; !database_.DataEOF(rows) && !Stopped(); database_.MoveNext(rows)) {
    const Value first = rows->Field(0);
    const auto* const text = std::get_if<std::string>(&first);
    if (text == nullptr) continue;
    if (std::exchange(first_row, false) || *text != code) {
      code = *text;
      const auto found = numbers_.find(code);
      number = found == numbers_.end() ? unknown : found->second;
    }
    if (number != unknown) use(number, *rows);
  }
  if (database_.ErrorsReported() != errors_before) {
    throw StandardError(error_number::kObjectNotSet, "the rental data could not be read");
  }
}

}  // namespace tenora
