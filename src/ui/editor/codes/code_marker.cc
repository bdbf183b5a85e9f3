#include "ui/editor/codes/code_marker.h"

#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <algorithm>

#include "ui/editor/text/protected_text.h"

namespace tenora {
namespace {

using Kind = CodeSpan::Kind;

QTextCharFormat LookOf(Kind kind) {
  QTextCharFormat look;
  switch (kind) {
    case Kind::kData:
      look.setBackground(QColor(0xd9, 0xe8, 0xfb));
      break;
    case Kind::kPrompt:
      look.setBackground(QColor(0xfd, 0xee, 0xc8));
      break;
    case Kind::kFutureDate:
      look.setBackground(QColor(0xdc, 0xf2, 0xdc));
      break;
    case Kind::kUnknown:
      look.setBackground(QColor(0xfb, 0xdc, 0xd9));
      look.setUnderlineStyle(QTextCharFormat::DashUnderline);
      look.setUnderlineColor(QColor(0xc0, 0x30, 0x20));
      break;
  }
  // Legible on these whatever colour scheme the paper has.
  look.setForeground(Qt::black);
  return look;
}

}  // namespace

CodeMarker::CodeMarker(QTextDocument* document) : QSyntaxHighlighter(document) {}

void CodeMarker::SetCodes(const QSet<QString>& names) {
  if (names == names_) return;
  names_ = names;
  rehighlight();
}

void CodeMarker::SetMisspelt(std::function<bool(const QString&)> misspelt) {
  misspelt_ = std::move(misspelt);
  rehighlight();
}

std::vector<CodeSpan> CodeMarker::CodesIn(const QString& text) const {
  return text.contains(u"<<") ? FindCodes(text, names_) : std::vector<CodeSpan>();
}

void CodeMarker::highlightBlock(const QString& text) {
  MarkProtected();
  for (const Word& word : MisspeltWords(text)) {
    QTextCharFormat look;
    look.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
    look.setUnderlineColor(Qt::red);
    setFormat(word.start, word.length, look);
  }
  for (const CodeSpan& code : CodesIn(text))
    setFormat(static_cast<int>(code.start), static_cast<int>(code.length), LookOf(code.kind));
  SpaceLetters();
}

void CodeMarker::SetLetterSpacing(std::function<double(const QTextCharFormat&)> spacing) {
  spacing_ = std::move(spacing);
  rehighlight();
}

void CodeMarker::SpaceLetters() {
  if (!spacing_) return;
  const QTextBlock block = currentBlock();
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    const QTextFragment fragment = it.fragment();
    if (fragment.charFormat().objectType() != QTextFormat::NoObject) continue;
    const double spacing = spacing_(fragment.charFormat());
    int at = fragment.position() - block.position();
    const int end = at + fragment.length();
    while (at < end) {
      QTextCharFormat look = format(at);
      int next = at + 1;
      while (next < end && format(next) == look) ++next;
      look.setFontLetterSpacingType(QFont::PercentageSpacing);
      look.setFontLetterSpacing(spacing);
      setFormat(at, next - at, look);
      at = next;
    }
  }
}

std::vector<CodeMarker::Word> CodeMarker::MisspeltWords(const QString& text) const {
  std::vector<Word> found;
  if (!misspelt_) return found;
  const std::vector<CodeSpan> codes = CodesIn(text);
  QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
  qsizetype start = -1;
  for (qsizetype at = 0; at >= 0; at = words.toNextBoundary()) {
    const auto reasons = words.boundaryReasons();
    if (start >= 0 && (reasons & QTextBoundaryFinder::EndOfItem)) {
      const bool in_code = std::any_of(codes.begin(), codes.end(), [&](const CodeSpan& code) {
        return start >= code.start && start < code.start + code.length;
      });
      if (!in_code && misspelt_(text.mid(start, at - start))) {
        found.push_back({static_cast<int>(start), static_cast<int>(at - start)});
      }
      start = -1;
    }
    if (reasons & QTextBoundaryFinder::StartOfItem) start = at;
  }
  return found;
}

QTextCursor CodeMarker::MisspeltAt(int position) const {
  const QTextBlock block = document()->findBlock(position);
  const int at = position - block.position();
  for (const Word& word : MisspeltWords(block.text())) {
    if (at < word.start || at > word.start + word.length) continue;
    QTextCursor selected(block);
    selected.setPosition(block.position() + word.start);
    selected.setPosition(block.position() + word.start + word.length, QTextCursor::KeepAnchor);
    return selected;
  }
  return {};
}

void CodeMarker::MarkProtected() {
  const QTextBlock block = currentBlock();
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    const QTextFragment fragment = it.fragment();
    if (!IsProtected(fragment.charFormat())) continue;
    QTextCharFormat look;
    look.setBackground(QBrush(QColor(0, 0, 0, 40), Qt::BDiagPattern));
    setFormat(fragment.position() - block.position(), fragment.length(), look);
  }
}

}  // namespace tenora
