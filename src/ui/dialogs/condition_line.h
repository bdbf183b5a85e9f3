// A condition being typed; the facts' names complete themselves.
#pragma once

#include <QCompleter>
#include <QLineEdit>
#include <QStringListModel>

namespace tenora {

class ConditionLine : public QLineEdit {
  Q_OBJECT

 public:
  explicit ConditionLine(QWidget* parent = nullptr);
  void SetNames(const QStringList& names) { names_->setStringList(names); }

 signals:
  // Return, which does not press the dialog's default button.
  void Finished();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // What stands before the caret of a name that is begun: where it begins.
  int NameBegin() const;
  void Offer();
  void Take(const QString& name);

  QStringListModel* names_;
  QCompleter* completer_;
};

}  // namespace tenora
