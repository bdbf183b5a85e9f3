#include "merge/custom_fields.h"

#include <algorithm>
#include <string>
#include <utility>

#include "data/sql_text.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/runtime/error.h"
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

// Takes the codes of one prefix out of a source, each piece moved once however many there are.
class CodeRemover {
 public:
  CodeRemover(const std::string& source, std::string_view prefix)
      : source_(source), prefix_(prefix) {}

  std::string Run() {
    while (NextPrefix() && TakeCode()) {
    }
    kept_.append(source_, at_);
    return std::move(kept_);
  }

 private:
  // Keeps everything up to and including the next prefix. A prefix that a removal has joined
  // together counts.
  bool NextPrefix() {
    const std::size_t most = prefix_.size() - 1;
    const std::size_t before = removed_ ? std::min(most, kept_.size()) : 0;
    const std::string joint = kept_.substr(kept_.size() - before) + source_.substr(at_, most);
    std::size_t end = at_;
    if (const std::size_t found = joint.find(prefix_); before > 0 && found < before) {
      end += found + prefix_.size() - before;
    } else {
      const std::size_t next = source_.find(prefix_, at_);
      if (next == std::string::npos) return false;
      end = next + prefix_.size();
    }
    kept_.append(source_, at_, end - at_);
    at_ = end;
    removed_ = false;
    return true;
  }

  // Drops the code whose prefix was kept last; a prefix without "<<" is not a code and stays. False
  // when no later code can be closed.
  bool TakeCode() {
    const std::size_t prefix = kept_.size() - prefix_.size();
    if (!std::string_view(kept_).substr(0, prefix).ends_with(kCodeStart)) return true;
    const std::size_t end = source_.find(kCodeEnd, at_);
    if (end == std::string::npos) return false;
    kept_.resize(prefix - kCodeStart.size());
    at_ = end + kCodeEnd.size();
    removed_ = true;
    return true;
  }

  const std::string& source_;
  std::string_view prefix_;
  std::size_t at_ = 0;  // everything before is kept or removed
  std::string kept_;
  bool removed_ = false;  // just before at_
};

// Removes the codes that are left.
void ClearUnknownFields(RichTextBox& editor, std::string_view prefix) {
  if (SourceContains(editor, prefix)) {
    editor.SetTextRTF(CodeRemover(editor.TextRTF(), prefix).Run());
  }
}

}  // namespace

void InsertCustomFields(const MergeTarget& target, std::int16_t parent_type,
                        std::string_view parent_code, std::string_view prefix) {
  const std::string sql =
      "select * from custom_fields where parenttype=" + std::to_string(parent_type) +
      " and parentcode = " + SQLText(parent_code);
  FillKnownFields(target, sql, prefix);
  ClearUnknownFields(target.editor, prefix);
}

}  // namespace tenora
