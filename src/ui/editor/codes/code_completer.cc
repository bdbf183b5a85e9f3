#include "ui/editor/codes/code_completer.h"

#include <QAbstractItemView>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>

namespace tenora {
namespace {

constexpr qsizetype kLongestName = 100;

}  // namespace

CodeCompleter::CodeCompleter(QTextEdit& control) : QObject(&control), control_(control) {
  completer_.setModel(&names_);
  completer_.setWidget(&control);
  completer_.setCompletionMode(QCompleter::PopupCompletion);
  completer_.setCaseSensitivity(Qt::CaseInsensitive);
  completer_.setFilterMode(Qt::MatchContains);
  completer_.popup()->setAccessibleName(tr("Merge codes"));
  connect(&completer_, qOverload<const QString&>(&QCompleter::activated), this,
          &CodeCompleter::Insert);
}

void CodeCompleter::SetCodes(const QStringList& names) { names_.setStringList(names); }

bool CodeCompleter::ListShown() const { return completer_.popup()->isVisible(); }

bool CodeCompleter::TakesKey(const QKeyEvent& event) const {
  if (!ListShown()) return false;
  switch (event.key()) {
    case Qt::Key_Enter:
    case Qt::Key_Return:
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      return true;
    default:
      return false;
  }
}

QString CodeCompleter::Started() const {
  const QTextCursor cursor = control_.textCursor();
  const QString before = cursor.block().text().left(cursor.positionInBlock());
  const qsizetype open = before.lastIndexOf(QLatin1String("<<"));
  if (open < 0 || cursor.hasSelection()) return {};
  const QString started = before.mid(open + 2);
  if (started.size() > kLongestName || started.contains(u'>') || started.startsWith(u'?'))
    return {};
  return started.isNull() ? QStringLiteral("") : started;
}

void CodeCompleter::Typed(const QKeyEvent& event) {
  const bool typed = !event.text().isEmpty() && event.text().front().isPrint();
  if (!typed && event.key() != Qt::Key_Backspace) return completer_.popup()->hide();
  const QString started = Started();
  if (started.isNull()) return completer_.popup()->hide();
  completer_.setCompletionPrefix(started);
  if (completer_.completionCount() == 0) return completer_.popup()->hide();
  completer_.popup()->setCurrentIndex(completer_.completionModel()->index(0, 0));
  QRect place = control_.cursorRect();
  place.setWidth(std::max(260, completer_.popup()->sizeHintForColumn(0) +
                                   completer_.popup()->verticalScrollBar()->sizeHint().width()));
  completer_.complete(place);
}

void CodeCompleter::Insert(const QString& name) {
  QTextCursor cursor = control_.textCursor();
  const qsizetype started = Started().size();
  // The rest of a code that is being changed is removed.
  const QString behind = cursor.block().text().mid(cursor.positionInBlock(), kLongestName);
  const qsizetype end = behind.indexOf(u'>');
  const bool closed =
      end >= 0 && behind.mid(end, 2) == QLatin1String(">>") && !behind.left(end).contains(u'<');
  const int place = cursor.position();
  cursor.beginEditBlock();
  cursor.setPosition(place - static_cast<int>(started));
  cursor.setPosition(place + static_cast<int>(closed ? end : 0), QTextCursor::KeepAnchor);
  cursor.insertText(name);
  if (!closed)
    cursor.insertText(QStringLiteral(">>"));
  else
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::MoveAnchor, 2);
  cursor.endEditBlock();
  control_.setTextCursor(cursor);
}

}  // namespace tenora
