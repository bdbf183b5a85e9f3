#include "ui/window/main/letter_status.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <string>

#include "letters/template_library.h"

namespace tenora {
namespace {

QString Tr(const char* text) { return QCoreApplication::translate("LetterStatus", text); }

QLabel* AddLabel(QStatusBar& bar, const char* name) {
  auto* label = new QLabel(&bar);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  label->setContentsMargins(8, 0, 8, 0);
  label->setFrameShape(QFrame::StyledPanel);
  bar.addPermanentWidget(label);
  return label;
}

// The recipient of a letter, or the kind of a template.
QString KindText(const LetterMembers& letter) {
  const QString name = QString::fromStdString(letter.RecipientName);
  if (letter.Kind == kTemplates) return Tr("Tenant template");
  if (letter.Kind == kOwnerTemplates) return Tr("Owner template");
  if (letter.Kind == kTenantLetter) return Tr("Letter to tenant %1").arg(name);
  if (letter.Kind == kOwnerLetter) return Tr("Letter to owner %1").arg(name);
  return Tr("%1 template").arg(QString::fromStdString(letter.Kind));
}

}  // namespace

LetterStatus::LetterStatus(QStatusBar& bar, QAction& page_width)
    : recipient_(AddLabel(bar, "lblRecipient")), state_(AddLabel(bar, "lblLetterState")) {
  auto* box = new QCheckBox(Tr("Page width"), &bar);
  box->setObjectName(QStringLiteral("chkPageWidth"));
  box->setAccessibleName(Tr("Wrap at the printer's page width"));
  box->setToolTip(box->accessibleName());
  box->setChecked(page_width.isChecked());
  QObject::connect(box, &QCheckBox::toggled, &page_width, &QAction::setChecked);
  QObject::connect(&page_width, &QAction::toggled, box, &QCheckBox::setChecked);
  box->setEnabled(page_width.isEnabled());
  QObject::connect(&page_width, &QAction::enabledChanged, box, &QCheckBox::setEnabled);
  bar.addPermanentWidget(box);
}

void LetterStatus::Show(const LetterMembers* letter, const std::string& which) {
  recipient_->setVisible(letter != nullptr);
  state_->setVisible(letter != nullptr);
  if (letter == nullptr) return;
  state_->setText(letter->FilePath.empty() ? Tr("New")
                  : letter->Changed        ? Tr("Changed")
                                           : Tr("Saved"));
  const QString told = QString::fromStdString(which);
  recipient_->setText(KindText(*letter) + (which.empty() ? told : " (" + told + ")"));
}

}  // namespace tenora
