#include "ui/window/appearance/frm_colours.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPainter>

#include "ui/editor/colour_dialog.h"

namespace tenora {

frmColours::frmColours(const SchemeColours& colours, QWidget* parent)
    : QDialog(parent), colours_(colours) {
  setObjectName(QStringLiteral("frmColours"));
  setWindowTitle(tr("Custom Colours"));
  auto* form = new QFormLayout;
  form->setHorizontalSpacing(16);
  form->addRow(tr("&Background:"), AddColour("cmdLight", tr("Background"), colours_.light));
  form->addRow(tr("&Selection:"), AddColour("cmdMid", tr("Selection"), colours_.mid));
  form->addRow(tr("&Text:"), AddColour("cmdDark", tr("Text"), colours_.dark));
  auto* hint = new QLabel(tr("Colours too close to each other are moved apart, so that every text "
                             "can be read."),
                          this);
  hint->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 14);
  layout->setSpacing(14);
  layout->addLayout(form);
  layout->addWidget(hint);
  layout->addWidget(buttons);
  setMinimumWidth(340);
}

QPushButton* frmColours::AddColour(const char* name, const QString& caption, QColor& colour) {
  auto* button = new QPushButton(this);
  button->setObjectName(QLatin1String(name));
  button->setAccessibleName(caption);
  Paint(button, colour);
  connect(button, &QPushButton::clicked, this, [this, button, caption, &colour] {
    const QColor chosen = AskColour(this, colour, caption);
    if (!chosen.isValid()) return;
    colour = chosen;
    Paint(button, colour);
    emit Changed();
  });
  return button;
}

void frmColours::Paint(QPushButton* button, const QColor& colour) {
  QPixmap sample(64, 18);
  sample.fill(colour);
  // A colour like the button's own would not be seen.
  QPainter(&sample).drawRect(sample.rect().adjusted(0, 0, -1, -1));
  button->setIcon(sample);
  button->setIconSize(sample.size());
  button->setText(colour.name());
}

}  // namespace tenora
