// Where the merge codes are in a text.
#pragma once

#include <QSet>
#include <QString>
#include <QTextDocument>
#include <vector>

namespace tenora {

// A merge code in a text, from "<<" to ">>", both included.
struct CodeSpan {
  enum class Kind { kData, kPrompt, kFutureDate, kUnknown };
  qsizetype start = 0, length = 0;
  Kind kind = Kind::kUnknown;
};

// Names are matched as merges match them, case-sensitively. A "<<" that is never closed is a span
// of its own.
std::vector<CodeSpan> FindCodes(const QString& text, const QSet<QString>& names);

// Moves both ends of a range in a letter outwards where they are inside a merge code: a merge finds
// only codes that have one format.
void TakeWholeCodes(const QTextDocument& document, int* start, int* end);

}  // namespace tenora
