#include "ui/editor/codes/code_marker.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <algorithm>

#include "merge/merge_codes.h"
#include "ui/editor/text/protected_text.h"

namespace tenora {
namespace {

using Kind = CodeSpan::Kind;

QString FromView(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool IsFutureDate(const QString& inside) {
  static const QRegularExpression kForm(
      QStringLiteral("^FutureDate:-?[0-9]+:(Days|Weeks|Months|Years)$"));
  return kForm.match(inside).hasMatch();
}

Kind KindOf(const QString& inside, const QSet<QString>& names) {
  if (inside.size() >= 3 && inside.startsWith(u'?') && inside.endsWith(u'?')) return Kind::kPrompt;
  if (IsFutureDate(inside)) return Kind::kFutureDate;
  // These two are commands of the insert menu: no merge fills in a code of their name.
  if (inside == FromView(kFutureDateItem) || inside == FromView(kPromptMessageItem))
    return Kind::kUnknown;
  return names.contains(inside) ? Kind::kData : Kind::kUnknown;
}

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

std::vector<CodeSpan> FindCodes(const QString& text, const QSet<QString>& names) {
  std::vector<CodeSpan> codes;
  const QString open = FromView(kCodeStart), close = FromView(kCodeEnd);
  for (qsizetype from = text.indexOf(open); from >= 0;) {
    const qsizetype end = text.indexOf(close, from + 2);
    if (end < 0) {
      codes.push_back({from, 2, Kind::kUnknown});
      break;
    }
    // The innermost opening belongs to the end.
    const qsizetype start = text.lastIndexOf(open, end - 2);
    const qsizetype first = std::max(from, start);
    codes.push_back({first, end + 2 - first, KindOf(text.mid(first + 2, end - first - 2), names)});
    from = text.indexOf(open, end + 2);
  }
  return codes;
}

void TakeWholeCodes(const QTextDocument& document, int* start, int* end) {
  const int given_start = *start, given_end = *end;
  for (const int place : {given_start, given_end}) {
    const QTextBlock block = document.findBlock(place);
    const QString text = block.text();
    if (!text.contains(QLatin1String("<<"))) continue;
    for (const CodeSpan& code : FindCodes(text, {})) {
      const int first = block.position() + static_cast<int>(code.start);
      const int behind = first + static_cast<int>(code.length);
      if (place <= first || place >= behind || !text.mid(code.start, code.length).endsWith(u'>'))
        continue;
      *start = std::min(*start, first);
      *end = std::max(*end, behind);
    }
  }
}

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
