#include "ui/dialogs/condition_line.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QRegularExpression>

namespace tenora {

ConditionLine::ConditionLine(QWidget* parent)
    : QLineEdit(parent),
      names_(new QStringListModel(this)),
      completer_(new QCompleter(names_, this)) {
  completer_->setWidget(this);
  completer_->setCaseSensitivity(Qt::CaseInsensitive);
  completer_->setFilterMode(Qt::MatchContains);
  connect(completer_, QOverload<const QString&>::of(&QCompleter::activated), this,
          &ConditionLine::Take);
  connect(this, &QLineEdit::textEdited, this, &ConditionLine::Offer);
}

int ConditionLine::NameBegin() const {
  static const QRegularExpression kBeforeName(QStringLiteral("(^|\\(|\\b(and|or|not)\\s)\\s*"),
                                              QRegularExpression::CaseInsensitiveOption);
  int begin = 0;
  auto matches = kBeforeName.globalMatch(text().left(cursorPosition()));
  while (matches.hasNext()) begin = static_cast<int>(matches.next().capturedEnd());
  return begin;
}

void ConditionLine::Offer() {
  const int begin = NameBegin();
  const QString begun = text().mid(begin, cursorPosition() - begin);
  completer_->setCompletionPrefix(begun);
  const bool whole = names_->stringList().contains(begun.trimmed(), Qt::CaseInsensitive);
  if (begun.isEmpty() || whole || completer_->completionCount() == 0) {
    completer_->popup()->hide();
  } else {
    completer_->complete();
  }
}

void ConditionLine::Take(const QString& name) {
  const int begin = NameBegin();
  const QString behind = text().mid(cursorPosition());
  setText(text().left(begin) + name + " " + behind);
  setCursorPosition(begin + static_cast<int>(name.size()) + 1);
  emit textEdited(text());
}

void ConditionLine::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter) return QLineEdit::keyPressEvent(event);
  event->accept();
  emit Finished();
}

}  // namespace tenora
