#include "merge/custom_fields.h"

#include <algorithm>
#include <string>
#include <utility>

#include "merge/catalogue.h"
#include "merge/replace_code.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"
#include "platform/runtime/value.h"

namespace tenora {
namespace {

void FillKnownFields(const MergeTarget& target, const std::string& sql, std::string_view prefix) {
  Database& database = target.session.database;
  const std::size_t errors_before = database.ErrorsReported();
  // A failed query has been shown; it ends the merge that called.
  const auto check = [&] {
    if (database.ErrorsReported() != errors_before) {
      throw StandardError(error_number::kObjectNotSet, "custom_fields");
    }
  };
  RecordsetPtr fields;
  database.CreateSet(fields, sql, query::kForwardOnly, query::kReadOnly);
  check();
  while (!database.DataEOF(fields)) {
    ReplaceCode(target, std::string(prefix).append(TextOf(fields->Field("fieldcode"))),
                TextOf(fields->Field("value")));
    database.MoveNext(fields);
    check();
  }
  database.DataClose(fields);
}

// Removes the codes that are left, from the first on.
void ClearUnknownFields(RichTextBox& editor, std::string_view prefix) {
  if (!SourceContains(editor, prefix)) return;
  std::string source = editor.TextRTF();
  std::size_t start = source.find(prefix);
  while (start != std::string::npos) {
    const std::size_t end = source.find(kCodeEnd, start);
    if (end == std::string::npos) break;
    if (!std::string_view(source).substr(0, start).ends_with(kCodeStart)) {
      start = source.find(prefix, start + prefix.size());
      continue;
    }
    const std::size_t code = start - kCodeStart.size();
    source.erase(code, end + kCodeEnd.size() - code);
    // Stepping back over what the removal may have joined into another code.
    start = source.find(prefix, code - std::min(code, prefix.size()));
  }
  editor.SetTextRTF(std::move(source));
}

}  // namespace

void InsertCustomFields(const MergeTarget& target, std::int16_t parent_type,
                        std::string_view parent_code, std::string_view prefix) {
  const std::string sql =
      "select * from custom_fields where parenttype=" + std::to_string(parent_type) +
      " and parentcode = '" + std::string(parent_code) + "'";
  FillKnownFields(target, sql, prefix);
  ClearUnknownFields(target.editor, prefix);
}

}  // namespace tenora
