#include "ui/window/desktop.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/dialogs/window_dialogs.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/background/main_thread_dialogs.h"
#include "ui/window/help/frm_splash.h"
#include "ui/window/main/frm_main.h"
#include "ui/window/recovery/abrupt_end.h"

namespace tenora {
namespace {

constexpr const char* kPlatformVariable = "QT_QPA_PLATFORM";

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// The requested Qt platform, or empty.
QByteArray NamedPlatform() { return qgetenv(kPlatformVariable); }

// Platforms other than these two (offscreen, vnc) neither need nor use a display.
bool IsDesktop(const QByteArray& platform) {
  return platform.isEmpty() || platform.startsWith("xcb") || platform.startsWith("wayland");
}

class TenoraStyle : public QProxyStyle {
 public:
  TenoraStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  // Buttons are labelled; icons on them are only noise.
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }

  // Fusion's outlines are darker than the window, so empty boxes and fields are invisible on a dark
  // one.
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool box = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    if (box) DrawEdge(Edge::kSquare, *option, painter);
    if (element == PE_IndicatorRadioButton) DrawEdge(Edge::kRound, *option, painter);
    if (element == PE_FrameLineEdit) DrawEdge(Edge::kField, *option, painter);
  }

  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_SpinBox || control == CC_ComboBox) DrawEdge(Edge::kField, *option, painter);
  }

 private:
  enum class Edge { kSquare, kRound, kField };

  static void DrawEdge(Edge edge, const QStyleOption& option, QPainter* painter) {
    if (option.palette.base().color().lightness() >= kDark) return;
    const bool focused = edge == Edge::kField && (option.state & State_HasFocus) != 0;
    QColor outline =
        focused ? option.palette.highlight().color().lighter(150) : option.palette.text().color();
    outline.setAlphaF(edge == Edge::kField && !focused ? kFieldStrength : kOutlineStrength);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, edge != Edge::kSquare);
    painter->setPen(outline);
    painter->setBrush(Qt::NoBrush);
    const QRect rect = option.rect.adjusted(0, 0, -1, -1);
    if (edge == Edge::kSquare) painter->drawRect(rect);
    if (edge == Edge::kRound) painter->drawEllipse(rect);
    if (edge == Edge::kField) painter->drawRoundedRect(QRectF(rect).translated(0.5, 0.5), 2, 2);
    painter->restore();
  }

  static constexpr int kDark = 128;  // of 255
  static constexpr float kOutlineStrength = 0.6F, kFieldStrength = 0.4F;
};

// Without a usable display Qt aborts the process; print a message and exit with a status instead.
void EndOnFatalMessage(QtMsgType type, const QMessageLogContext&, const QString& message) {
  std::fprintf(stderr, "%s\n", qPrintable(message));
  if (type != QtFatalMsg) return;
  std::fputs("The windows of Tenora cannot be shown on this display.\n", stderr);
  std::fflush(stderr);
  std::_Exit(1);
}

void KeepQuiet(QtMsgType, const QMessageLogContext&, const QString&) {}

}  // namespace

struct Desktop::State {
  // `remarks` handles the messages that Qt prints during start-up.
  State(int& argc, char** argv, QtMessageHandler remarks)
      : handler_before(qInstallMessageHandler(remarks)), application(argc, argv) {
    qInstallMessageHandler(handler_before);
    QApplication::setApplicationName(QStringLiteral("Tenora"));
    // No display name: Qt would append it to every title, and those are given.
    QApplication::setWindowIcon(LineIcon("tenora"));
    QApplication::setStyle(new TenoraStyle);
  }

  QtMessageHandler handler_before;
  QApplication application;
  WindowDialogs boxes;
  MainThreadDialogs dialogs{boxes};
};

std::string Desktop::DisplayProblem() {
  if (!IsDesktop(NamedPlatform()) || IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY")) return {};
  return "There is no display to show the windows of Tenora on: neither DISPLAY nor "
         "WAYLAND_DISPLAY is set.\n\"tenora --help\" shows what can be done from the command line.";
}

Desktop::Desktop(int& argc, char** argv)
    : Desktop(std::make_unique<State>(argc, argv, EndOnFatalMessage)) {}

Desktop::Desktop(std::unique_ptr<State> state) : state_(std::move(state)) {}

Desktop::~Desktop() = default;

std::unique_ptr<Desktop> Desktop::ForBoxes(int& argc, char** argv) {
  const QByteArray named = NamedPlatform();
  if (!IsDesktop(named) || !DisplayProblem().empty()) return nullptr;
  if (QCoreApplication::instance() != nullptr) return nullptr;
  // Qt uses the first of these that works, and ends the process if none does.
  qputenv(kPlatformVariable, (named.isEmpty() ? QByteArray("xcb;wayland") : named) + ";offscreen");
  auto state = std::make_unique<State>(argc, argv, KeepQuiet);
  named.isEmpty() ? qunsetenv(kPlatformVariable) : qputenv(kPlatformVariable, named);
  if (!IsDesktop(QGuiApplication::platformName().toLatin1())) return nullptr;
  return std::unique_ptr<Desktop>(new Desktop(std::move(state)));
}

Dialogs& Desktop::dialogs() { return state_->dialogs; }

int Desktop::Run(const CommandParts& parts) {
  std::unique_ptr<frmSplash> splash;
  if (parts.command_line.text().empty()) {
    splash = std::make_unique<frmSplash>();
    splash->show();
    splash->Wait();
  }
  frmMain window(parts);
  window.MDIForm_Load();
  const ScratchSweep sweep = parts.session.SweepScratchFiles();
  splash.reset();
  const AbruptEnd abrupt_end([&window] { window.KeepLetters(); });
  window.show();
  return QApplication::exec();
}

}  // namespace tenora
