// Offers merge codes while "<<" is typed, and closes them.
#pragma once

#include <QCompleter>
#include <QKeyEvent>
#include <QObject>
#include <QStringListModel>
#include <QTextEdit>

namespace tenora {

class CodeCompleter : public QObject {
  Q_OBJECT

 public:
  explicit CodeCompleter(QTextEdit& control);

  void SetCodes(const QStringList& names);
  // True for a key that the list takes while it is shown: the editor then leaves it alone.
  bool TakesKey(const QKeyEvent& event) const;
  // After a key was typed: shows, narrows or hides the list.
  void Typed(const QKeyEvent& event);
  bool ListShown() const;

 private:
  // The text between the last "<<" before the caret and the caret; null where there is none.
  QString Started() const;
  void Insert(const QString& name);

  QTextEdit& control_;
  QStringListModel names_;
  QCompleter completer_;
};

}  // namespace tenora
