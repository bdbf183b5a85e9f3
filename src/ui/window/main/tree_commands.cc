#include "ui/window/main/tree_commands.h"

#include <QDesktopServices>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "letters/file_names.h"
#include "letters/letter_origin.h"
#include "letters/template_library.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/files.h"
#include "platform/runtime/free_file_name.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"
#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

using Entry = TreeModel::Entry;
using Type = TreeModel::Type;

// Whether a letter would get the name that another one of the same folder was made under, by which
// the run that made it, and earlier versions of the program, know it.
bool BelongsToNamesake(Session& session, const Entry& letter,
                       const std::filesystem::path& renamed) {
  if (NamesakesOf(session.caches, letter.recipient).empty()) return false;
  const std::filesystem::path data = session.database.DataFolder();
  const auto before = OriginOf(data, letter.path), after = MadeUnderName(data, renamed);
  if (!after) return false;
  return !before || !WasMadeFor(*before, after->letter_kind, after->recipient_name, after->code);
}

}  // namespace

void TreeCommands::FillMenu(QMenu& menu, const Entry& entry) {
  const auto add = [&](const char* icon, const QString& text, const char* procedure,
                       std::function<void()> body) {
    return menu.addAction(LineIcon(icon), text, this, [this, procedure, body = std::move(body)] {
      Guarded(session_.platform.dialogs, std::string("frmMain - ") + procedure, body);
    });
  };
  const bool file = !entry.path.empty();
  if (file) {
    menu.setDefaultAction(
        add("open", tr("&Open"), "mnuOpen_Click", [this, entry] { letters_.Open(entry); }));
  }
  if (entry.type == Type::kTenant || entry.type == Type::kOwner) {
    add("generate", tr("&Generate a Letter…"), "cmdGenerate_Click",
        [this, entry] { generate_.GenerateFor(entry); });
  }
  if (entry.type == Type::kTemplate &&
      (entry.kind == kTemplates || entry.kind == kOwnerTemplates)) {
    menu.addAction(&generate_action_);
  }
  if (entry.type == Type::kLetter) {
    add("mail", tr("E-&mail…"), "mnuEmail_Click", [this, entry] {
      letters_.Open(entry);
      mail_action_.trigger();
    });
  }
  if (file) {
    menu.addSeparator();
    add("letter", tr("&Rename…"), "mnuRename_Click", [this, entry] { Rename(entry); });
    add("delete", tr("&Delete…"), "mnuDelete_Click", [this, entry] { letters_.Delete(entry); });
  }
  if (!entry.folder.empty()) {
    menu.addSeparator();
    add("folder", tr("Show &Folder"), "mnuShowFolder_Click", [this, entry] { ShowFolder(entry); });
  }
}

void TreeCommands::Rename(const Entry& entry) {
  Dialogs& dialogs = session_.platform.dialogs;
  const std::string old_name = entry.name.toStdString();
  const std::string extension = entry.path.extension().string();
  std::string name = old_name;
  for (bool accepted = false; !accepted;) {
    const auto answer = dialogs.AskText("Enter the new name for " + old_name, "Rename", name);
    if (!answer) return;
    std::string typed(TrimBlanks(*answer));
    if (typed.ends_with(".rtf")) typed = TrimBlanks(typed.substr(0, typed.size() - 4));
    if (typed.empty()) return;
    name = SafeFileName(typed, kLongestFileName - extension.size());
    accepted = name == typed || dialogs.Show({.text = FileNameQuestion(typed, name),
                                              .title = "Rename",
                                              .buttons = Buttons::kYesNo,
                                              .icon = Icon::kQuestion,
                                              .default_answer = Answer::kYes}) == Answer::kYes;
    if (!accepted) name = typed;
  }
  const std::filesystem::path path = entry.path.parent_path() / (name + extension);
  if (path == entry.path) return;
  if (BelongsToNamesake(session_, entry, path)) {
    return dialogs.Say("The letter \"" + name + "\" was made for another one called " +
                       path.parent_path().filename().string() +
                       ", and would be mailed to that one.\r\nNothing was renamed.");
  }
  const std::filesystem::path taken = FileOfName(path);
  const bool by_another = !taken.empty() && taken != entry.path;
  if (by_another || !RenameWithoutReplacing(entry.path, path)) {
    return dialogs.Say("A file of this name is there already:\r\n" +
                       (by_another ? taken : path).string() + "\r\nNothing was renamed.");
  }
  if (LetterWindow* open = letters_.OfFile(entry.path)) {
    open->letter().members().FilePath = path.string();
    open->letter().members().LetterTitle = name;
    open->letter().UpdateCaption();
  }
  tree_.RefreshAfterRename(path);
  emit Told(tr("Renamed to %1").arg(QString::fromStdString(name)));
}

void TreeCommands::ShowFolder(const Entry& entry) {
  Dialogs& dialogs = session_.platform.dialogs;
  const std::filesystem::path data_folder = session_.database.DataFolder();
  const bool file = !entry.path.empty();
  std::filesystem::path folder = file ? entry.path.parent_path() : data_folder / entry.folder;
  const bool moved = !entry.earlier_folder.empty() && !std::filesystem::is_directory(folder);
  if (moved) folder = data_folder / entry.earlier_folder;
  if (!std::filesystem::is_directory(folder)) {
    return dialogs.Say("There is no folder yet; the first letter that is saved makes it:\r\n" +
                       folder.string());
  }
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder.string())))) {
    dialogs.Say("No program of this desktop shows folders. The folder is:\r\n" + folder.string());
  }
}

}  // namespace tenora
