// The main window: the template tree on the left, the open letters on the right, menus and tool
// bars. It only creates and connects the parts; the commands are implemented in the parts.
#pragma once

#include <QMainWindow>
#include <QSplitter>

#include "startup/commands.h"
#include "ui/editor/editor_actions.h"
#include "ui/window/appearance/window_colours.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/find_panel.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/letter/letter_output.h"
#include "ui/window/letter/letter_spelling.h"
#include "ui/window/letter/lint_panel.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/main/generate_letters.h"
#include "ui/window/main/given_files.h"
#include "ui/window/main/help_commands.h"
#include "ui/window/main/import_templates.h"
#include "ui/window/main/letter_runs.h"
#include "ui/window/main/letter_status.h"
#include "ui/window/main/main_menus.h"
#include "ui/window/main/queued_runs.h"
#include "ui/window/main/rental_data_load.h"
#include "ui/window/main/settings_commands.h"
#include "ui/window/main/tree_commands.h"
#include "ui/window/main/window_layout.h"
#include "ui/window/recovery/letter_keeper.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class frmMain : public QMainWindow {
  Q_OBJECT

 public:
  explicit frmMain(const CommandParts& parts, QWidget* parent = nullptr);
  ~frmMain() override;

  // The load sequence, before the window is shown. A step that fails shows its error; the rest
  // runs.
  void MDIForm_Load();
  // Keeps what is not saved, before an end that does not close the window.
  void KeepLetters() { keeper_.KeepNow(); }
  // Updates the insert menu and the format command for the letter in front.
  void DisplayInsertMenu() { menus_.DisplayInsertMenu(); }

  ctlTree& tree() { return *tree_; }
  LetterDesk& desk() { return *desk_; }
  OpenLetters& letters() { return letters_; }

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // Runs a procedure's body; an error is shown under "frmMain - procedure".
  template <typename Body>
  void Guard(const char* procedure, Body&& body);
  void ConnectParts();
  void LoadPageWidth();
  void LoadFonts();
  void FirstDisplay();
  // Those of the command line.
  void OpenNamedFiles();
  // Updates everything that depends on the letter in front and its state.
  void ShowLetterState();
  // Names the letter in front, null if none is open, in the window's title.
  void ShowTitle(const LetterWindow* front);
  // Runs long work in the background with the tree held, since the work may change the caches.
  void RunBeside(const QString& title, const Work& work);

  CommandParts parts_;
  Session& session_;
  QSplitter* splitter_;
  ctlTree* tree_;
  LetterDesk* desk_;
  LintPanel* lint_panel_;
  FindPanel* find_panel_;
  EditorActions* editor_actions_;
  QAction* page_layout_;
  QAction* page_width_;
  WindowColours colours_;
  WindowPrinters printers_;
  LetterSpelling spelling_;
  OpenLetters letters_;
  LetterKeeper keeper_;
  LetterOutput output_;
  RentalDataLoad rental_data_;
  LetterRuns runs_;
  QueuedRuns queued_runs_;
  GenerateLetters generate_;
  ImportTemplates imports_;
  GivenFiles given_files_;
  SettingsCommands settings_;
  HelpCommands help_;
  MainMenus menus_;
  LetterStatus status_;
  TreeCommands tree_commands_;
  WindowLayout layout_;
  bool displayed_ = false;
};

}  // namespace tenora
