// Offers merge codes while "<<" is typed, and closes them.
#pragma once

#include <QCompleter>
#include <QKeyEvent>
#include <QObject>
#include <QStringListModel>

namespace tenora {

class LetterEditor;

class CodeCompleter : public QObject {
  Q_OBJECT

 public:
  explicit CodeCompleter(LetterEditor& editor);

  void SetCodes(const QStringList& names);
  // True when the list took the key: the editor then leaves it alone.
  bool TakesKey(const QKeyEvent& event) const;
  // After a key was typed: shows, narrows or hides the list.
  void Typed(const QKeyEvent& event);
  bool ListShown() const;

 private:
  // What stands between the last "<<" before the caret and the caret; null where there is none.
  QString Started() const;
  void Insert(const QString& name);

  LetterEditor& editor_;
  QStringListModel names_;
  QCompleter completer_;
};

}  // namespace tenora
