#include "ui/window/help/frm_splash.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>
#include <cmath>

#include "platform/dialogs/dialogs.h"
#include "platform/runtime/version.h"
#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr QColor kNavy(57, 66, 115);
constexpr int kLookAgain = 50;  // milliseconds

double SecondsSinceMidnight() { return QTime::currentTime().msecsSinceStartOfDay() / 1000.0; }

void SetInk(QLabel* label, const QColor& colour) {
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, colour);
  label->setPalette(palette);
}

}  // namespace

frmSplash::frmSplash(QWidget* parent) : QWidget(parent, Qt::SplashScreen) {
  setObjectName(QStringLiteral("frmSplash"));
  setWindowTitle(QString::fromLatin1(kApplicationTitle));
  setFixedSize(460, 240);

  auto* picture = new QLabel(this);
  picture->setPixmap(LineIcon("tenora").pixmap(QSize(72, 72), devicePixelRatioF()));
  auto* title = new QLabel(QString::fromLatin1(kApplicationTitle), this);
  title->setObjectName(QStringLiteral("Label1"));
  title->setWordWrap(true);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.9);
  large.setBold(true);
  title->setFont(large);
  SetInk(title, kNavy);
  auto* version = new QLabel(QString::fromLatin1(kVersionCaption), this);
  version->setObjectName(QStringLiteral("lblVersion"));
  SetInk(version, QColor(0x5A, 0x5F, 0x73));

  auto* texts = new QVBoxLayout;
  texts->addStretch();
  texts->addWidget(title);
  texts->addSpacing(6);
  texts->addWidget(version);
  texts->addStretch();
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(36, 24, 36, 24);
  layout->setSpacing(24);
  layout->addWidget(picture);
  layout->addLayout(texts, 1);

  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    move(screen->availableGeometry().center() - rect().center());
  }
}

void frmSplash::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), Qt::white);
  painter.fillRect(0, height() - 8, width(), 8, kNavy);
  painter.setPen(QColor(0xC8, 0xCC, 0xDC));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void frmSplash::Wait() {
  const double start = std::nearbyint(SecondsSinceMidnight());
  QTimer clock;
  clock.start(kLookAgain);
  QEventLoop loop;
  while (!dismissed_ && !IsOver(start, SecondsSinceMidnight())) {
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  }
}

}  // namespace tenora
