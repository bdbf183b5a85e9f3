#include "ui/dialogs/frm_settings.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "platform/dialogs/window_size.h"
#include "ui/dialogs/scrolled_page.h"
#include "ui/dialogs/settings_pages.h"

namespace tenora {

frmSettings::frmSettings(Session& session, QWidget* parent) : QDialog(parent) {
  setObjectName("frmSettings");
  setWindowTitle(tr("Settings"));
  auto* tabs = new QTabWidget;
  tabs->setObjectName("tabPages");
  const auto add = [&](SettingsPage* page, const QString& title) {
    pages_.push_back(page);
    tabs->addTab(new ScrolledPage(page), title);
  };
  add(new DatabasePage(session), tr("&Database"));
  add(new MailPage(session), tr("&Mail"));
  add(new PrintingPage(session), tr("&Printing"));
  add(new SpellingPage(session), tr("&Spelling"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmSettings::Save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs);
  layout->addWidget(buttons);
  resize(OpeningSize(*this, {560, 420}));
}

void frmSettings::Save() {
  for (SettingsPage* page : pages_) page->Save();
  accept();
}

}  // namespace tenora
