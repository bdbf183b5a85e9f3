// What the tree's context menu offers for an entry.
#include <QDesktopServices>
#include <QStatusBar>
#include <QUrl>

#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

using Entry = TreeModel::Entry;
using Type = TreeModel::Type;

}  // namespace

void frmMain::FillTreeMenu(QMenu& menu, const Entry& entry) {
  const auto add = [&](const char* icon, const QString& text, const char* procedure, Body body) {
    return menu.addAction(LineIcon(icon), text, this,
                          [this, procedure, body = std::move(body)] { Guard(procedure, body); });
  };
  const bool file = !entry.path.empty();
  if (file) {
    menu.setDefaultAction(
        add("open", tr("&Open"), "mnuOpen_Click", [this, entry] { OpenEntry(entry); }));
  }
  if (entry.type == Type::kTenant || entry.type == Type::kOwner) {
    add("generate", tr("&Generate a Letter…"), "cmdGenerate_Click",
        [this, entry] { GenerateFor(entry); });
  }
  if (entry.type == Type::kTemplate &&
      (entry.kind == kTemplates || entry.kind == kOwnerTemplates)) {
    menu.addAction(findChild<QAction*>(QStringLiteral("cmdGenerate")));
  }
  if (entry.type == Type::kLetter) {
    add("mail", tr("E-&mail…"), "mnuEmail_Click", [this, entry] {
      OpenEntry(entry);
      mail_action_->trigger();
    });
  }
  if (file) {
    menu.addSeparator();
    add("letter", tr("&Rename…"), "mnuRename_Click", [this, entry] { RenameEntry(entry); });
    add("delete", tr("&Delete…"), "mnuDelete_Click", [this, entry] { DeleteEntry(entry); });
  }
  if (!entry.folder.empty()) {
    menu.addSeparator();
    add("folder", tr("Show &Folder"), "mnuShowFolder_Click", [this, entry] { ShowFolder(entry); });
  }
}

std::optional<Entry> frmMain::TemplateFor(const Entry& recipient) {
  const std::string_view kind = recipient.type == Type::kOwner ? kOwnerTemplates : kTemplates;
  std::optional<Entry> front = TemplateInFront();
  if (front && front->kind == kind) return front;
  const TemplateLibrary library(session_.database.DataFolder());
  const std::vector<std::string> names = library.Names(kind);
  if (names.empty()) {
    dialogs().Say("There is no template in the '" + std::string(kind) + "' group yet.");
    return std::nullopt;
  }
  const auto chosen =
      dialogs().Choose("Template of the letter to " + recipient.recipient, names, 0);
  if (!chosen) return std::nullopt;
  Entry entry;
  entry.kind = kind;
  entry.name = QString::fromStdString(names[*chosen]);
  entry.path = library.PathOf(kind, names[*chosen]);
  return entry;
}

void frmMain::GenerateFor(const Entry& recipient) {
  if (const std::optional<Entry> letter_template = TemplateFor(recipient)) {
    GenerateFrom(*letter_template, Recipient{recipient.recipient, recipient.tenant_code});
  }
}

void frmMain::RenameEntry(const Entry& entry) {
  const std::string old_name = entry.name.toStdString();
  const auto answer = dialogs().AskText("Enter the new name for " + old_name, "Rename", old_name);
  if (!answer) return;
  const std::string extension = entry.path.extension().string();
  std::string name(TrimBlanks(*answer));
  if (name.ends_with(".rtf")) name.resize(name.size() - 4);
  if (TrimBlanks(name).empty()) return;
  name = SafeFileName(name, kLongestFileName - extension.size());
  const std::filesystem::path path = entry.path.parent_path() / (name + extension);
  if (path == entry.path) return;
  if (!RenameWithoutReplacing(entry.path, path)) {
    return dialogs().Say("A file of this name is there already:\r\n" + path.string() +
                         "\r\nNothing was renamed.");
  }
  if (LetterWindow* open = desk_->OfFile(entry.path)) {
    open->letter().members().FilePath = path.string();
    open->letter().members().LetterTitle = name;
    open->letter().UpdateCaption();
  }
  tree_->RefreshTree();
  statusBar()->showMessage(tr("Renamed to %1").arg(QString::fromStdString(name)));
}

void frmMain::ShowFolder(const Entry& entry) {
  const std::filesystem::path folder = session_.database.DataFolder() / entry.folder;
  if (!std::filesystem::is_directory(folder)) {
    return dialogs().Say("There is no folder yet; the first letter that is saved makes it:\r\n" +
                         folder.string());
  }
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder.string())))) {
    dialogs().Say("No program of this desktop shows folders. The folder is:\r\n" + folder.string());
  }
}

}  // namespace tenora
