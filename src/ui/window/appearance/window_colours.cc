#include "ui/window/appearance/window_colours.h"

#include <QApplication>
#include <QStyle>

#include "ui/window/appearance/colour_scheme.h"
#include "ui/window/appearance/edged_style.h"
#include "ui/window/appearance/frm_colours.h"

namespace tenora {
namespace {

constexpr int kDark = 128;  // of 255

}  // namespace

WindowColours::WindowColours(Settings& settings, QWidget* window)
    : settings_(settings),
      window_(window),
      dark_desktop_(QApplication::palette().window().color().lightness() < kDark) {
  if (dark_desktop_ && EdgedStyle::Mends(*QApplication::style()))
    QApplication::setStyle(new EdgedStyle);
}

void WindowColours::Apply() {
  QApplication::setPalette(MakePalette(StoredColours(settings_), dark_desktop_));
}

void WindowColours::Choose(std::string_view scheme) {
  if (scheme == "Custom") {
    frmColours colours(StoredCustomColours(settings_), window_);
    QObject::connect(&colours, &frmColours::Changed, &colours, [&] {
      QApplication::setPalette(MakePalette(colours.Colours(), dark_desktop_));
    });
    if (colours.exec() != QDialog::Accepted) return Apply();
    StoreCustomColours(settings_, colours.Colours());
  }
  StoreScheme(settings_, scheme);
  Apply();
}

}  // namespace tenora
