#include "ui/editor/colour_dialog.h"

#include <QColorDialog>
#include <QDialog>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include "platform/dialogs/window_size.h"

namespace tenora {
namespace {

// Qt's dialog, which has a fixed size, as a part of another.
class Colours : public QColorDialog {
 public:
  explicit Colours(const QColor& shown) : QColorDialog(shown) {
    setWindowFlags(Qt::Widget);
    setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
    for (QPushButton* button : findChildren<QPushButton*>()) button->setAutoDefault(false);
  }

 protected:
  // Enter and Escape are for the dialog around it.
  void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

class ScrolledColours : public QScrollArea {
 public:
  explicit ScrolledColours(Colours* colours) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setWidget(colours);
    setMinimumWidth(colours->sizeHint().width() + style()->pixelMetric(QStyle::PM_ScrollBarExtent));
  }
  // All of it, where the screen has the room.
  QSize sizeHint() const override { return {minimumWidth(), widget()->sizeHint().height()}; }
};

}  // namespace

QColor AskColour(QWidget* parent, const QColor& shown, const QString& title) {
  QDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("frmColour"));
  dialog.setWindowTitle(title);
  auto* colours = new Colours(shown);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(new ScrolledColours(colours), 1);
  layout->addWidget(buttons);
  // Not before the dialog has it: Return would go to the button that Tab passed last.
  buttons->button(QDialogButtonBox::Ok)->setDefault(true);
  colours->show();
  dialog.resize(OpeningSize(dialog, dialog.sizeHint()));
  return dialog.exec() == QDialog::Accepted ? colours->currentColor() : QColor();
}

}  // namespace tenora
