// What the main window's menus do with the letter in front.
#include <QApplication>
#include <QStatusBar>

#include "letters/template_library.h"
#include "merge/merge_codes.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "ui/dialogs/frm_future_date.h"
#include "ui/window/appearance/colour_scheme.h"
#include "ui/window/appearance/frm_colours.h"
#include "ui/window/help/frm_forms.h"
#include "ui/window/help/frm_guide.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

constexpr int kTellFor = 10000;  // milliseconds in the status bar

constexpr int kFindingsHeight = 130;  // pixels

}  // namespace

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
  window->letter().OnSaveFailed = [this](const RuntimeError& error) {
    ShowError(dialogs(), "frmMain - mnuSave_Click", error);
  };
  window->letter().ConfirmReplace = [this](const std::filesystem::path& path) {
    return dialogs().Show({.text = "A file of this name is there already:\r\n" + path.string() +
                                   "\r\nReplace it?",
                           .buttons = Buttons::kYesNo,
                           .icon = Icon::kQuestion,
                           .default_answer = Answer::kNo}) == Answer::kYes;
  };
  window->letter().ConfirmOverwrite = [this](const std::filesystem::path& path) {
    return dialogs().Show(
               {.text = "Another program has changed this letter since it was opened:\r\n" +
                        path.string() + "\r\nWrite over it?",
                .buttons = Buttons::kYesNo,
                .icon = Icon::kQuestion,
                .default_answer = Answer::kNo}) == Answer::kYes;
  };
  window->letter().PaperWidth = [this, window] { return PaperWidth(*window); };
  window->letter().ShowFutureDateDialog = [this](RichTextBox& editor) {
    frmFutureDate(editor, this).exec();
  };
  UnderlineIn(*window);
  window->letter().ChangeWidth(page_width_action_->isChecked());
  window->view().ShowRuler(editor_actions_->ShowRuler()->isChecked());
  connect(editor_actions_->ShowRuler(), &QAction::toggled, &window->view(), &LetterView::ShowRuler);
  connect(&window->view(), &LetterView::MarginsDragged, this, [this](int left, int right) {
    Guard("frmMain_MarginsDragged", [&] { StoreMargins(left, right); });
  });
  return window;
}

LetterOutput& frmMain::Output() {
  if (!printers_) {
    throw StandardError(error_number::kPrinterError, "the printers could not be read");
  }
  if (!output_) {
    output_ = std::make_unique<LetterOutput>(
        session_, *printers_,
        [this](const QString& title, const LetterOutput::Work& work) { RunBeside(title, work); });
    output_->Tell = [this](const QString& message) { statusBar()->showMessage(message, kTellFor); };
    output_->PrinterChosen = [this] { ShowPages(); };
    output_->PrintFromPreview = [this] {
      findChild<QAction*>(QStringLiteral("mnuPrint"))->trigger();
    };
  }
  return *output_;
}

void frmMain::RunBeside(const QString& title, const LetterOutput::Work& work) {
  tree_->Hold(true);
  try {
    RunInBackground(this, title, work);
  } catch (...) {
    tree_->Hold(false);
    throw;
  }
  tree_->Hold(false);
}

void frmMain::CheckTemplate() {
  LetterWindow* window = desk_->Active();
  if (window == nullptr) return;
  const InsertList list = ListFor(window->letter().members().Kind);
  const TemplateKind kind = list == InsertList::kTenant  ? TemplateKind::kTenant
                            : list == InsertList::kOwner ? TemplateKind::kOwner
                                                         : TemplateKind::kCheque;
  lint_panel_->Show(*window, LintTemplate(window->letter().rtfLetter, kind,
                                          session_.platform.clock.Today(), &custom_fields_));
  resizeDocks({lint_panel_}, {kFindingsHeight}, Qt::Vertical);
}

void frmMain::DeleteEntry(const TreeModel::Entry& entry) {
  if (LetterWindow* open = desk_->OfFile(entry.path)) {
    desk_->BringToFront(open);
    return open->letter().Delete();
  }
  frmLetter letter(session_);
  letter.InsertListName = [this] { return insert_menus_->ListName(); };
  letter.RefreshTree = [this] { tree_->RefreshTree(); };
  letter.members().LetterTitle = entry.name.toStdString();
  letter.members().RecipientName = entry.recipient;
  letter.members().FilePath = entry.path.string();
  letter.Delete();
}

void frmMain::ShowForms() {
  QStringList names;
  const TemplateLibrary library(session_.database.DataFolder());
  for (const std::string& name : library.Names(kTemplates)) {
    names.append(QString::fromStdString(name));
  }
  auto* forms = new frmForms(session_.settings, names, this);
  forms->setAttribute(Qt::WA_DeleteOnClose);
  connect(forms, &frmForms::OpenAsked, this, [this](const QString& name) {
    const QModelIndex index = tree_->model().IndexOfKey(QStringLiteral("Templates/") + name);
    if (const TreeModel::Entry* entry = tree_->model().EntryAt(index)) {
      OpenEntry(TreeModel::Entry(*entry));
    }
  });
  forms->show();
}

void frmMain::ChooseScheme(const char* scheme) {
  Settings& settings = session_.settings;
  if (std::string_view(scheme) == "Custom") {
    frmColours colours(StoredCustomColours(settings), this);
    connect(&colours, &frmColours::Changed, this,
            [&] { QApplication::setPalette(MakePalette(colours.Colours(), dark_desktop_)); });
    if (colours.exec() != QDialog::Accepted) return ApplyColourScheme();
    StoreCustomColours(settings, colours.Colours());
  }
  StoreScheme(settings, scheme);
  ApplyColourScheme();
}

void frmMain::OpenEntry(const TreeModel::Entry& entry) {
  Guard("ctlTree_DblClick", [&] {
    if (LetterWindow* open = desk_->OfFile(entry.path)) return desk_->BringToFront(open);
    std::unique_ptr<LetterWindow> window(MakeLetterWindow());
    LetterMembers& members = window->letter().members();
    members.LetterTitle = entry.name.toStdString();
    members.RecipientName = entry.recipient;
    members.TenantCode = entry.tenant_code;
    window->letter().LoadLetter(entry.path, entry.kind);
    PutOnDesk(std::move(window));
  });
}

void frmMain::OpenFile(const std::filesystem::path& path) {
  const std::filesystem::path data_folder = session_.database.DataFolder();
  const std::vector<std::string> kinds{std::string(kTemplates), std::string(kOwnerTemplates),
                                       session_.cheque_word};
  for (const std::string& kind : kinds) {
    if (path.parent_path() == data_folder / kind) return OpenAsTemplate(path, kind);
  }
  if (OpenListed(path)) return;
  const auto chosen = dialogs().Choose(
      "\"" + path.filename().string() + "\" is not in the library. Open it as",
      {"Tenant letter template", "Owner letter template", session_.cheque_word + " template"}, 0);
  if (chosen) OpenAsTemplate(path, kinds[*chosen]);
}

void frmMain::OpenAsTemplate(const std::filesystem::path& path, const std::string& kind) {
  const QString extension = QString::fromStdString(path.extension().string()).toLower();
  if (extension != QLatin1String(".txt")) {
    TreeModel::Entry entry;
    entry.name = QString::fromStdString(path.stem().string());
    entry.kind = entry.folder = entry.recipient = kind;
    entry.path = path;
    return OpenEntry(entry);
  }
  // A text begins a new letter: saved over its file, that would be a text no more.
  std::unique_ptr<LetterWindow> window(MakeLetterWindow());
  LetterMembers& members = window->letter().members();
  members.LetterTitle = path.stem().string();
  members.RecipientName = kind;
  window->letter().LoadLetter(path, kind, "TXT");
  members.FilePath.clear();
  window->letter().UpdateCaption();
  PutOnDesk(std::move(window));
}

void frmMain::ShowGuide(const char* page) {
  const std::filesystem::path folder =
      GuideFolder(QCoreApplication::applicationDirPath().toStdString());
  if (folder.empty() || !std::filesystem::exists(folder / page)) {
    return dialogs().Say("The document \"" + std::string(page) +
                         "\" is not installed beside the program. Install the program again, or "
                         "look for it in the folder \"docs\" of its sources.");
  }
  if (auto* open = findChild<frmGuide*>()) {
    open->ShowPage(folder / page);
    open->show();
    open->raise();
    return open->activateWindow();
  }
  (new frmGuide(folder / page, this))->show();
}

void frmMain::StartNew(std::string_view kind) {
  std::unique_ptr<LetterWindow> window(MakeLetterWindow());
  window->letter().members().RecipientName = kind;
  window->letter().StartNew(kind);
  PutOnDesk(std::move(window));
}

void frmMain::PutOnDesk(std::unique_ptr<LetterWindow> window) {
  // The letter opens also where the margins are stored wrongly.
  Guard("ShowPage", [&] { ShowPage(*window); });
  // Known before the text is there: marking codes in a long text anew takes far longer.
  window->editor().SetCodes(CodesFor(ListFor(window->letter().members().Kind)));
  window->ShowLetter();
  desk_->Add(window.release());
}

void frmMain::ShowPage(LetterWindow& window) {
  const int width = PaperWidth(window);
  if (width == 0) return;
  const PageMargins margins = StoredMargins(session_.settings);
  window.view().SetPage(width, margins.left, margins.right);
}

void frmMain::StoreMargins(int left, int right) {
  session_.settings.SaveSettingText("Mail\\PrinterSetup", "LeftMargin", std::to_string(left));
  session_.settings.SaveSettingText("Mail\\PrinterSetup", "RightMargin", std::to_string(right));
  ShowPages();
}

void frmMain::ShowPages() {
  for (LetterWindow* window : desk_->Letters()) ShowPage(*window);
}

int frmMain::PaperWidth(LetterWindow& window) {
  try {
    if (!printers_) return 0;
    const printing::Orientation orientation =
        printing::OrientationOf(window.letter().rtfLetter.Document());
    return printing::PaperOf(printers_->Current(), orientation).width;
  } catch (const RuntimeError&) {
    return 0;
  }
}

QStringList frmMain::CodesFor(InsertList list) const {
  QStringList names;
  const auto add = [&names](TemplateKind kind) {
    for (const MergeCode& code : MergeCodesOf(kind)) {
      names.append(QString::fromStdString(std::string(code.name)));
    }
  };
  const auto add_fields = [&names](const std::set<std::string>& codes, std::string_view prefix) {
    for (const std::string& code : codes) {
      names.append(QString::fromStdString(std::string(prefix).append(code)));
    }
  };
  switch (list) {
    case InsertList::kCheque:
      add(TemplateKind::kCheque);
      break;
    case InsertList::kOwner:
      add(TemplateKind::kOwner);
      add_fields(custom_fields_.owner, kOwnerCustomPrefix);
      break;
    case InsertList::kTenant:
      add(TemplateKind::kTenant);
      add_fields(custom_fields_.tenant, kTenantCustomPrefix);
      add_fields(custom_fields_.property, kPropertyCustomPrefix);
      names.append(QString::fromLatin1(kBuildingReceiptNumber.data()));
      break;
  }
  return names;
}

void frmMain::ShowLetterState() {
  LetterWindow* window = desk_->Active();
  for (QAction* action : std::as_const(letter_commands_)) action->setEnabled(window != nullptr);
  insert_menus_->SetEnabled(window != nullptr);
  const std::string kind = window == nullptr ? "" : window->letter().members().Kind;
  mail_action_->setEnabled(kind == kTenantLetter || kind == kOwnerLetter);
  DisplayInsertMenu();
  LetterEditor* editor = window == nullptr ? nullptr : &window->editor();
  if (editor_actions_->Editor() != editor) {
    editor_actions_->SetEditor(editor);
    if (editor != nullptr) editor->SetCodes(CodesFor(ListFor(kind)));
  }
  if (window == nullptr) {
    letter_state_->hide();
    recipient_->hide();
    return;
  }
  letter_state_->show();
  recipient_->show();
  const LetterMembers& members = window->letter().members();
  letter_state_->setText(members.FilePath.empty() ? tr("New")
                         : members.Changed        ? tr("Changed")
                                                  : tr("Saved"));
  recipient_->setText(KindText(members));
}

QString frmMain::KindText(const LetterMembers& members) const {
  const QString name = QString::fromStdString(members.RecipientName);
  if (members.Kind == kTemplates) return tr("Tenant template");
  if (members.Kind == kOwnerTemplates) return tr("Owner template");
  if (members.Kind == kTenantLetter) return tr("Letter to tenant %1").arg(name);
  if (members.Kind == kOwnerLetter) return tr("Letter to owner %1").arg(name);
  return tr("%1 template").arg(QString::fromStdString(members.Kind));
}

void frmMain::ApplyPageWidth(bool page_width) {
  session_.settings.SaveSettingText("Mail", "PrinterPageWidth", page_width ? "1" : "0");
  for (LetterWindow* window : desk_->Letters()) window->letter().ChangeWidth(page_width);
  ShowLetterState();
}

}  // namespace tenora
