// Marks merge codes, misspelt words and protected text while a letter is written, and sets letters
// as far apart as they are on paper.
#pragma once

#include <QSet>
#include <QString>
#include <QSyntaxHighlighter>
#include <QTextCursor>
#include <functional>
#include <vector>

#include "ui/editor/codes/merge_code_spans.h"

namespace tenora {

class CodeMarker : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  explicit CodeMarker(QTextDocument* document);

  // The names that the letter's kind of merge knows.
  void SetCodes(const QSet<QString>& names);
  // Says whether a word is misspelt; empty: words are not checked.
  void SetMisspelt(std::function<bool(const QString&)> misspelt);
  // Says how far apart letters of a format are, percent.
  void SetLetterSpacing(std::function<double(const QTextCharFormat&)> spacing);
  // Selects the misspelt word that a position of the document is in or beside; nothing without one.
  QTextCursor MisspeltAt(int position) const;

 protected:
  void highlightBlock(const QString& text) override;

 private:
  struct Word {
    int start, length;  // in its paragraph
  };
  std::vector<CodeSpan> CodesIn(const QString& text) const;
  std::vector<Word> MisspeltWords(const QString& text) const;
  void MarkProtected();
  void SpaceLetters();

  QSet<QString> names_;
  std::function<bool(const QString&)> misspelt_;
  std::function<double(const QTextCharFormat&)> spacing_;
};

}  // namespace tenora
