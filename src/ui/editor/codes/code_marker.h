// Marks merge codes, misspelt words and protected text while a letter is written.
#pragma once

#include <QSet>
#include <QString>
#include <QSyntaxHighlighter>
#include <functional>
#include <vector>

namespace tenora {

// A merge code in a text: from its "<<" to behind its ">>".
struct CodeSpan {
  enum class Kind { kData, kPrompt, kFutureDate, kUnknown };
  qsizetype start = 0, length = 0;
  Kind kind = Kind::kUnknown;
};

// Names are matched as merges match them: letter case counts.
std::vector<CodeSpan> FindCodes(const QString& text, const QSet<QString>& names);

// Both ends of a range in a letter move outwards where they stand in the middle of a merge code: a
// merge finds only codes that have one format.
void TakeWholeCodes(const QTextDocument& document, int* start, int* end);

class CodeMarker : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  explicit CodeMarker(QTextDocument* document);

  // The names that the letter's kind of merge knows.
  void SetCodes(const QSet<QString>& names);
  // Tells which words are misspelt; none: words are not checked.
  void SetMisspelt(std::function<bool(const QString&)> misspelt);

 protected:
  void highlightBlock(const QString& text) override;

 private:
  void MarkWords(const QString& text, const std::vector<CodeSpan>& codes);
  void MarkProtected();

  QSet<QString> names_;
  std::function<bool(const QString&)> misspelt_;
};

}  // namespace tenora
