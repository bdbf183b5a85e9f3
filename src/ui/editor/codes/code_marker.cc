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

void CodeMarker::highlightBlock(const QString& text) {
  MarkProtected();
  const std::vector<CodeSpan> codes =
      text.contains(u"<<") ? FindCodes(text, names_) : std::vector<CodeSpan>();
  if (misspelt_) MarkWords(text, codes);
  for (const CodeSpan& code : codes)
    setFormat(static_cast<int>(code.start), static_cast<int>(code.length), LookOf(code.kind));
}

void CodeMarker::MarkWords(const QString& text, const std::vector<CodeSpan>& codes) {
  QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
  qsizetype start = -1;
  for (qsizetype at = 0; at >= 0; at = words.toNextBoundary()) {
    const auto reasons = words.boundaryReasons();
    if (start >= 0 && (reasons & QTextBoundaryFinder::EndOfItem)) {
      const QString word = text.mid(start, at - start);
      const bool in_code = std::any_of(codes.begin(), codes.end(), [&](const CodeSpan& code) {
        return start >= code.start && start < code.start + code.length;
      });
      if (!in_code && misspelt_(word)) {
        QTextCharFormat look;
        look.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
        look.setUnderlineColor(Qt::red);
        setFormat(static_cast<int>(start), static_cast<int>(word.size()), look);
      }
      start = -1;
    }
    if (reasons & QTextBoundaryFinder::StartOfItem) start = at;
  }
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
