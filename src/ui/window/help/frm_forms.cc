#include "ui/window/help/frm_forms.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail";
constexpr const char* kKey = "FormsAtStartup";  // "0" shows the notice

}  // namespace

bool frmForms::WantedAtStartup(Settings& settings) {
  return settings.GetSettingText(kSection, kKey, "0") == "0";
}

frmForms::frmForms(Settings& settings, const QStringList& forms, QWidget* parent)
    : QDialog(parent) {
  setObjectName(QStringLiteral("frmForms"));
  setWindowTitle(tr("Template Forms"));
  auto* title = new QLabel(
      forms.isEmpty() ? tr("There are no template forms yet") : tr("Your template forms"), this);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.4);
  large.setBold(true);
  title->setFont(large);
  auto* text =
      new QLabel(forms.isEmpty()
                     ? tr("Write the first one with File, New, and save it: it then appears in the "
                          "'Templates' group on the left side of the screen.")
                     : tr("These forms are installed. You find them in the 'Templates' group on "
                          "the left side of the screen; double-click one to open it."),
                 this);
  text->setWordWrap(true);
  auto* list = new QListWidget(this);
  list->setObjectName(QStringLiteral("lstForms"));
  list->setAccessibleName(tr("Template forms"));
  for (const QString& form : forms) {
    list->addItem(new QListWidgetItem(LineIcon("template"), form));
  }
  list->setVisible(!forms.isEmpty());
  connect(list, &QListWidget::itemActivated, this, [this](const QListWidgetItem* item) {
    emit OpenAsked(item->text());
    accept();
  });

  auto* dont_show = new QCheckBox(tr("&Do not show this at start-up"), this);
  dont_show->setObjectName(QStringLiteral("chkDontShow"));
  dont_show->setChecked(!WantedAtStartup(settings));
  connect(dont_show, &QCheckBox::toggled, this, [&settings](bool checked) {
    settings.SaveSettingText(kSection, kKey, checked ? "1" : "0");
  });
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(dont_show);
  bottom->addStretch();
  bottom->addWidget(buttons);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 14);
  layout->setSpacing(10);
  layout->addWidget(title);
  layout->addWidget(text);
  layout->addWidget(list, 1);
  layout->addLayout(bottom);
  resize(460, forms.isEmpty() ? 180 : 380);
}

}  // namespace tenora
