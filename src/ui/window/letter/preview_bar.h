// Above a template: switches between its codes and the letter of a recipient, and chooses whose
// letter that is.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QWidget>
#include <vector>

namespace tenora {

class PreviewBar : public QWidget {
  Q_OBJECT

 public:
  enum class Step { kFirst, kPrevious, kNext, kLast };
  enum class Recipients { kTenancies, kOwners };

  // Shows the switch alone.
  explicit PreviewBar(QWidget* parent = nullptr);

  void ShowCodes();
  void ShowLetters(Recipients recipients, bool has_questions);
  // "12 of 42: Jane Smith (P00012)"; `number` from 1, 0 where nobody is found.
  void ShowPlace(int number, int count, const QString& name);
  // In place of it: why there is no letter.
  void ShowProblem(const QString& problem);

  QString SearchText() const { return search_->text(); }
  bool WithClosed() const { return closed_->isChecked(); }

 signals:
  void SwitchAsked(bool letters);
  void StepAsked(tenora::PreviewBar::Step step);
  // The search text or the check box has changed.
  void ListChanged();
  void AnswersAsked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void ShowText(const QString& text);
  void Elide();

  bool letters_ = false;
  QString text_;  // of the label, before it is cut to its width
  QToolButton* switch_;
  std::vector<QToolButton*> steps_;
  QLabel* place_;
  QWidget* choice_;  // the second line
  QLineEdit* search_;
  QCheckBox* closed_;
  QPushButton* answers_;
};

}  // namespace tenora
