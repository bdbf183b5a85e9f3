#include "ui/dialogs/day_field.h"

#include <QCalendarWidget>
#include <QFrame>
#include <QLocale>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "merge/condition.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr int kIconSize = 16;  // pixels

// A sheet of a calendar, in the colour of the field's text.
QIcon CalendarIcon(const QWidget& field) {
  const qreal scale = field.devicePixelRatioF();
  QPixmap pixmap(QSize(kIconSize, kIconSize) * scale);
  pixmap.setDevicePixelRatio(scale);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor colour = field.palette().color(QPalette::Text);
  painter.setPen(QPen(colour, 1));
  painter.drawRect(QRectF(2.5, 3.5, 11, 10));
  painter.fillRect(QRectF(2.5, 3.5, 11, 3), colour);
  painter.drawLine(QPointF(5.5, 1.5), QPointF(5.5, 4));
  painter.drawLine(QPointF(10.5, 1.5), QPointF(10.5, 4));
  for (const qreal y : {8.0, 10.5}) {
    for (const qreal x : {4.5, 7.25, 10.0}) painter.fillRect(QRectF(x, y, 1.5, 1.5), colour);
  }
  return QIcon(pixmap);
}

// The day that the text names, else today.
QDate DayIn(const QString& text) {
  const QDate today = QDate::currentDate();
  try {
    const Date named =
        ReadDay(text.toStdString(), Date::FromCalendar(today.year(), today.month(), today.day()));
    const CalendarTime day = named.Calendar();
    return {day.year, day.month, day.day};
  } catch (const ConditionError&) {
    return today;
  } catch (const RuntimeError&) {
    return today;
  }
}

}  // namespace

DayField::DayField(const QString& text, QWidget* parent) : QLineEdit(text, parent) {
  open_ = addAction(CalendarIcon(*this), QLineEdit::TrailingPosition);
  open_->setText(tr("Choose a day"));
  open_->setToolTip(tr("Choose a day (Alt+Down)"));
  open_->setVisible(false);
  connect(open_, &QAction::triggered, this, &DayField::ShowCalendar);
}

void DayField::OfferCalendar(bool offered) {
  if (offered) open_->setIcon(CalendarIcon(*this));  // the colours may have changed
  open_->setVisible(offered);
}

void DayField::keyPressEvent(QKeyEvent* event) {
  const bool asked = event->key() == Qt::Key_Down && (event->modifiers() & Qt::AltModifier) != 0;
  if (asked && open_->isVisible()) return ShowCalendar();
  QLineEdit::keyPressEvent(event);
}

void DayField::ShowCalendar() {
  auto* const popup = new QFrame(this, Qt::Popup);
  popup->setAttribute(Qt::WA_DeleteOnClose);
  popup->setFrameShape(QFrame::StyledPanel);
  auto* const calendar = new QCalendarWidget(popup);
  calendar->setObjectName(QStringLiteral("calDay"));
  calendar->setAccessibleName(tr("Day"));
  calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
  calendar->setSelectedDate(DayIn(text()));
  const auto choose = [this, popup](QDate day) {
    popup->close();
    Choose(day);
  };
  connect(calendar, &QCalendarWidget::clicked, this, choose);
  connect(calendar, &QCalendarWidget::activated, this, choose);
  auto* const layout = new QVBoxLayout(popup);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(calendar);
  // Below the field, or where the screen ends, as near to it as it goes.
  const QRect room = screen()->availableGeometry();
  const QSize size = popup->sizeHint();
  QPoint corner = mapToGlobal(rect().bottomLeft());
  if (corner.y() + size.height() > room.bottom()) {
    corner.setY(mapToGlobal(rect().topLeft()).y() - size.height());
  }
  corner.setX(std::max(room.left(), std::min(corner.x(), room.right() - size.width())));
  popup->move(corner);
  popup->show();
  calendar->setFocus();
}

void DayField::Choose(QDate day) {
  // Months have their English names in conditions.
  setText(QLocale(QLocale::English).toString(day, QStringLiteral("d MMMM yyyy")));
  setFocus();
  emit DayChosen();
}

}  // namespace tenora
