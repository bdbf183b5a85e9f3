#include "ui/window/main/help_commands.h"

#include <QCoreApplication>
#include <filesystem>

#include "letters/template_library.h"
#include "ui/window/help/frm_about.h"
#include "ui/window/help/frm_forms.h"
#include "ui/window/help/frm_guide.h"

namespace tenora {

void HelpCommands::ShowGuide(const std::string& page) {
  const std::filesystem::path folder =
      GuideFolder(QCoreApplication::applicationDirPath().toStdString());
  if (folder.empty() || !std::filesystem::exists(folder / page)) {
    return session_.platform.dialogs.Say(
        "The document \"" + page +
        "\" is not installed beside the program. Install the program again, or "
        "look for it in the folder \"docs\" of its sources.");
  }
  if (auto* open = window_->findChild<frmGuide*>()) {
    open->ShowPage(folder / page);
    open->show();
    open->raise();
    return open->activateWindow();
  }
  (new frmGuide(folder / page, window_))->show();
}

void HelpCommands::ShowForms() {
  QStringList names;
  const TemplateLibrary library(session_.database.DataFolder());
  for (const std::string& name : library.Names(kTemplates)) {
    names.append(QString::fromStdString(name));
  }
  auto* forms = new frmForms(session_.settings, names, window_);
  forms->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(forms, &frmForms::OpenAsked, forms, [this](const QString& name) {
    const TreeModel& model = tree_.model();
    const QModelIndex index = model.IndexOfKey(QStringLiteral("Templates/") + name);
    if (const TreeModel::Entry* entry = model.EntryAt(index)) {
      letters_.Open(TreeModel::Entry(*entry));
    }
  });
  forms->show();
}

void HelpCommands::ShowAbout() { frmAbout(session_.database.DataFolder(), window_).exec(); }

}  // namespace tenora
