#include "ui/window/appearance/icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

// The resources of a static library must be initialised by name, outside any namespace.
static void MakeResourcesKnown() { Q_INIT_RESOURCE(window); }

namespace tenora {
namespace {

constexpr const char* kInk = "#404040";  // the stroke colour in the SVG files

QColor InkFor(QIcon::Mode mode) {
  const QPalette palette = QGuiApplication::palette();
  switch (mode) {
    case QIcon::Disabled:
      return palette.color(QPalette::Disabled, QPalette::WindowText);
    case QIcon::Selected:
      return palette.color(QPalette::HighlightedText);
    default:
      return palette.color(QPalette::WindowText);
  }
}

class LineEngine : public QIconEngine {
 public:
  explicit LineEngine(QByteArray drawing) : drawing_(std::move(drawing)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    QByteArray coloured = drawing_;
    coloured.replace(kInk, InkFor(mode).name().toLatin1());
    QSvgRenderer renderer(coloured);
    renderer.render(painter, rect);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }

  QIconEngine* clone() const override { return new LineEngine(drawing_); }

 private:
  QByteArray drawing_;
};

}  // namespace

QIcon LineIcon(const char* name) {
  MakeResourcesKnown();
  QFile file(QStringLiteral(":/tenora/window/icons/%1.svg").arg(QLatin1String(name)));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QIcon(new LineEngine(file.readAll()));
}

}  // namespace tenora
