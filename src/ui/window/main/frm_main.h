// The main window: menus, tool bar and status bar, the template tree on the left and the open
// letters on the right.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QSplitter>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "letters/generation.h"
#include "platform/spelling/spelling.h"
#include "startup/commands.h"
#include "ui/editor/editor_actions.h"
#include "ui/window/letter/insert_menus.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/letter/letter_output.h"
#include "ui/window/letter/lint_panel.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class frmMain : public QMainWindow {
  Q_OBJECT

 public:
  explicit frmMain(const CommandParts& parts, QWidget* parent = nullptr);
  ~frmMain() override;

  // The load sequence, before the window is shown. What fails is shown and the rest goes on.
  void MDIForm_Load();
  // The caption of the insert menu and of the format command, for the letter in front.
  void DisplayInsertMenu();

  ctlTree& tree() { return *tree_; }
  LetterDesk& desk() { return *desk_; }

  // Opens a template or letter, or brings it to the front where it is open.
  void OpenEntry(const TreeModel::Entry& entry);
  // A file that the user chose: what it is follows from its folder, else it is asked.
  void OpenFile(const std::filesystem::path& path);
  void StartNew(std::string_view kind);

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  struct Look {
    const char* icon = nullptr;
    QKeySequence keys = {};
    QString tip = {};
  };
  using Body = std::function<void()>;

  // Runs a slot's body; an error is shown under "frmMain - name".
  void Guard(const char* procedure, const Body& body);
  // A menu command named "mnuPrint", whose slot is "mnuPrint_Click".
  QAction* Command(QMenu* menu, const char* name, const QString& text, const Look& look, Body body);
  // One that acts on the letter in front, and is disabled without one.
  QAction* LetterCommand(QMenu* menu, const char* name, const QString& text, const Look& look,
                         const std::function<void(frmLetter& letter)>& command);

  // frm_main_menus.cc
  QMenu* AddMenu(const char* name, const QString& title);
  void BuildMenus();
  void BuildFileMenu();
  void BuildEditMenu();
  void BuildViewMenu();
  void BuildInsertMenu();
  void BuildFormatMenu();
  void BuildToolsMenu();
  void BuildWindowMenu();
  void BuildHelpMenu();
  void BuildToolBar();
  void BuildFormatBar();
  void BuildStatusBar();
  QLabel* AddState(const char* name);
  // The open letters at the end of the window menu, with a mark on the one in front.
  void ListLetters(QMenu& windows);

  // frm_main_tree.cc
  void FillTreeMenu(QMenu& menu, const TreeModel::Entry& entry);
  // Letters for this tenant or owner, from the template in front or one that is asked for.
  void GenerateFor(const TreeModel::Entry& recipient);
  std::optional<TreeModel::Entry> TemplateFor(const TreeModel::Entry& recipient);
  // Asks for the new name of a template or saved letter; where it is open, the letter follows.
  void RenameEntry(const TreeModel::Entry& entry);
  void ShowFolder(const TreeModel::Entry& entry);

  // frm_main_load.cc
  void LoadPageWidth();
  void LoadFonts();
  void LoadRentalData();
  void FirstDisplay();
  void RestoreLayout();
  void StoreLayout();

  // frm_main_commands.cc
  LetterWindow* MakeLetterWindow();
  // Raises 482 (Printer error) when the printers could not be read at the start.
  LetterOutput& Output();
  void CheckTemplate();
  void DeleteEntry(const TreeModel::Entry& entry);
  void ShowForms();
  void ShowGuide(const char* page);
  void ChooseScheme(const char* scheme);
  void ShowLetterState();
  // Who the letter is to, or what kind of template it is.
  QString KindText(const LetterMembers& members) const;
  void OpenAsTemplate(const std::filesystem::path& path, const std::string& kind);
  void WithLetter(const std::function<void(frmLetter& letter)>& command);
  void ApplyPageWidth(bool page_width);
  // A letter that holds its text.
  void PutOnDesk(std::unique_ptr<LetterWindow> window);
  // The printer's paper and the stored margins, for the ruler and the lines' ends.
  void ShowPage(LetterWindow& window);
  void ShowPages();
  // Of the sheet as the letter lays it, twips; 0 where the current printer cannot be told, which
  // printing then says.
  int PaperWidth(LetterWindow& window);
  void StoreMargins(int left, int right);
  QStringList CodesFor(InsertList list) const;

  // frm_main_tools.cc
  // The template selected in the tree, else the one in front.
  std::optional<TreeModel::Entry> TemplateToGenerate() const;
  std::optional<TreeModel::Entry> TemplateInFront() const;
  void GenerateLetters();
  // Asks for whom and where to; `preselected` is ticked already.
  void GenerateFrom(const TreeModel::Entry& letter_template,
                    const std::optional<Recipient>& preselected);
  void RunGeneration(const std::function<GenerationSummary(GenerationObserver&)>& run);
  // Opens a saved letter of a tenant or owner; false where the tree has none of this file.
  bool OpenListed(const std::filesystem::path& path);
  void CheckSpelling(frmLetter& letter);
  void LoadSpeller();
  void UnderlineIn(LetterWindow& window);
  void ShowReceiptOptions(bool receipts);
  void ShowSettings();
  void ShowPrinterSetup();

  void ApplyColourScheme();
  // Long work beside the window; the tree is not refreshed meanwhile, as work changes the caches.
  void RunBeside(const QString& title, const LetterOutput::Work& work);
  QWidget* MakeWelcome();
  Dialogs& dialogs() { return session_.platform.dialogs; }

  CommandParts parts_;
  Session& session_;
  ctlTree* tree_;
  LetterDesk* desk_;
  QSplitter* splitter_;
  QComboBox* insert_combo_;
  std::unique_ptr<InsertMenus> insert_menus_;
  EditorActions* editor_actions_;
  std::unique_ptr<printing::Printers> printers_;
  std::unique_ptr<LetterOutput> output_;
  CustomFieldCodes custom_fields_;
  std::shared_ptr<spelling::Speller> speller_;  // for the underlines; null where there are none
  LintPanel* lint_panel_;
  bool dark_desktop_;
  QLabel *letter_state_, *recipient_;
  QList<QAction*> letter_commands_;  // that need a letter
  QList<QAction*> listed_letters_;   // in the window menu, since it was last shown
  QAction* format_action_ = nullptr;
  QAction* mail_action_ = nullptr;
  QAction* page_width_action_ = nullptr;
  bool displayed_ = false;
};

}  // namespace tenora
