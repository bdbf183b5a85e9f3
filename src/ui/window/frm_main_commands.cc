// What the main window's menus do with the letter in front.
#include <QStatusBar>

#include "letters/template_library.h"
#include "ui/window/frm_main.h"

namespace tenora {

void frmMain::WithLetter(const std::function<void(frmLetter& letter)>& command) {
  LetterWindow* window = desk_->Active();
  if (window == nullptr) return;
  command(window->letter());
  window->ShowLetter();
}

LetterWindow* frmMain::MakeLetterWindow() {
  auto* window = new LetterWindow(session_);
  window->letter().RefreshTree = [this] { tree_->RefreshTree(); };
  window->letter().InsertListName = [this] { return insert_menus_->ListName(); };
  return window;
}

void frmMain::OpenEntry(const TreeModel::Entry& entry) {
  Guard("ctlTree_DblClick", [&] {
    if (LetterWindow* open = desk_->OfFile(entry.path)) return desk_->BringToFront(open);
    std::unique_ptr<LetterWindow> window(MakeLetterWindow());
    LetterMembers& members = window->letter().members();
    members.LetterTitle = entry.name.toStdString();
    members.RecipientName = entry.folder;
    members.TenantCode = entry.tenant_code;
    window->letter().LoadLetter(entry.path, entry.kind);
    window->ShowLetter();
    desk_->Add(window.release());
  });
}

void frmMain::OpenFile(const std::filesystem::path& path) {
  TreeModel::Entry entry;
  entry.name = QString::fromStdString(path.stem().string());
  entry.kind = kTemplates;
  entry.folder = kTemplates;
  entry.path = path;
  OpenEntry(entry);
}

void frmMain::StartNew(std::string_view kind) {
  LetterWindow* window = MakeLetterWindow();
  window->letter().members().RecipientName = kind;
  window->letter().StartNew(kind);
  window->ShowLetter();
  desk_->Add(window);
}

void frmMain::ShowLetterState() {
  LetterWindow* window = desk_->Active();
  for (QAction* action : std::as_const(letter_commands_)) action->setEnabled(window != nullptr);
  insert_menus_->SetEnabled(window != nullptr);
  DisplayInsertMenu();
  page_width_state_->setText(page_width_action_->isChecked() ? tr("Page width")
                                                             : tr("Window width"));
  if (window == nullptr) {
    letter_state_->clear();
    recipient_->clear();
    return;
  }
  const LetterMembers& members = window->letter().members();
  letter_state_->setText(members.FilePath.empty() ? tr("New")
                         : members.Changed        ? tr("Changed")
                                                  : tr("Saved"));
  recipient_->setText(QString::fromStdString(members.RecipientName));
}

void frmMain::ApplyPageWidth(bool page_width) {
  session_.settings.SaveSettingText("Mail", "PrinterPageWidth", page_width ? "1" : "0");
  ShowLetterState();
}

}  // namespace tenora
