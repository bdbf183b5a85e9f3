#include "ui/window/desktop.h"

#include <QApplication>
#include <QProxyStyle>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/dialogs/window_dialogs.h"
#include "ui/window/frm_main.h"
#include "ui/window/frm_splash.h"
#include "ui/window/icons.h"
#include "ui/window/main_thread_dialogs.h"

namespace tenora {
namespace {

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// Buttons say what they do; small pictures on them only make them restless.
class PlainButtons : public QProxyStyle {
 public:
  PlainButtons() : QProxyStyle(QStringLiteral("Fusion")) {}
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }
};

// Qt ends a process without a usable display by an abort; its user is better served by a sentence
// and an exit status.
void EndOnFatalMessage(QtMsgType type, const QMessageLogContext&, const QString& message) {
  std::fprintf(stderr, "%s\n", qPrintable(message));
  if (type != QtFatalMsg) return;
  std::fputs("The windows of Tenora cannot be shown on this display.\n", stderr);
  std::fflush(stderr);
  std::_Exit(1);
}

}  // namespace

struct Desktop::State {
  State(int& argc, char** argv)
      : handler_before(qInstallMessageHandler(EndOnFatalMessage)), application(argc, argv) {
    qInstallMessageHandler(handler_before);
  }

  QtMessageHandler handler_before;
  QApplication application;
  WindowDialogs boxes;
  MainThreadDialogs dialogs{boxes};
};

std::string Desktop::DisplayProblem() {
  // Other platforms than the two desktops' (offscreen, vnc) need no display.
  const char* platform = std::getenv("QT_QPA_PLATFORM");
  const std::string named = platform == nullptr ? "" : platform;
  const bool desktop = named.empty() || named.starts_with("xcb") || named.starts_with("wayland");
  if (!desktop || IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY")) return {};
  return "There is no display to show the windows of Tenora on: neither DISPLAY nor "
         "WAYLAND_DISPLAY is set.\n\"tenora --help\" shows what can be done from the command line.";
}

Desktop::Desktop(int& argc, char** argv) : state_(std::make_unique<State>(argc, argv)) {
  QApplication::setApplicationName(QStringLiteral("Tenora"));
  // No display name: Qt would put it behind the title of every box, which are the system's own.
  QApplication::setWindowIcon(LineIcon("tenora"));
  QApplication::setStyle(new PlainButtons);
}

Desktop::~Desktop() = default;

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
  splash.reset();
  window.show();
  return QApplication::exec();
}

}  // namespace tenora
