#include "ui/dialogs/frm_settings.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

#include "ui/dialogs/settings_pages.h"

namespace tenora {

frmSettings::frmSettings(Session& session, QWidget* parent) : QDialog(parent) {
  setObjectName("frmSettings");
  setWindowTitle(tr("Settings"));
  auto* tabs = new QTabWidget;
  tabs->setObjectName("tabPages");
  const auto add = [&](SettingsPage* page, const QString& title) {
    pages_.push_back(page);
    // A small or enlarged screen may be lower than a page.
    auto* scrolled = new QScrollArea;
    scrolled->setWidget(page);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->viewport()->setAutoFillBackground(false);
    page->setAutoFillBackground(false);
    tabs->addTab(scrolled, title);
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
  constexpr QSize kUsualSize(560, 420), kFrame(16, 48);
  resize(kUsualSize.boundedTo(screen()->availableSize() - kFrame));
}

void frmSettings::Save() {
  for (SettingsPage* page : pages_) page->Save();
  accept();
}

}  // namespace tenora
