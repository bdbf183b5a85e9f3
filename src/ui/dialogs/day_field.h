// A line for a value, with a calendar to choose it from where the value is a day.
#pragma once

#include <QAction>
#include <QKeyEvent>
#include <QLineEdit>

namespace tenora {

class DayField : public QLineEdit {
  Q_OBJECT

 public:
  explicit DayField(const QString& text, QWidget* parent = nullptr);

  // Whether the button and Alt+Down show the calendar. What is typed is not changed by it.
  void OfferCalendar(bool offered);

 signals:
  // The text is a day of the calendar now, as conditions have it: "1 April 2026".
  void DayChosen();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void ShowCalendar();
  void Choose(QDate day);

  QAction* open_;
};

}  // namespace tenora
