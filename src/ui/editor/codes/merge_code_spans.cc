#include "ui/editor/codes/merge_code_spans.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <algorithm>

#include "merge/merge_codes.h"
#include "merge/template_forms.h"

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
  // These two are commands of the Insert menu: no merge replaces a code of their name.
  if (inside == FromView(kFutureDateItem) || inside == FromView(kPromptMessageItem))
    return Kind::kUnknown;
  if (names.contains(inside)) return Kind::kData;
  const std::string code = inside.toStdString();
  // Forms have their names in any letter case, and formats.
  const bool form = TemplateForms::IsForm(code, TemplateKind::kTenant) ||
                    TemplateForms::IsForm(code, TemplateKind::kOwner);
  return form && !names.isEmpty() ? Kind::kData : Kind::kUnknown;
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
    // The ">>" closes the innermost "<<".
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

}  // namespace tenora
