// The main window's menus and tool bars: the commands with their names, shortcuts and icons, and
// which of them need a letter. The commands themselves are implemented in the parts.
#pragma once

#include <QAction>
#include <QComboBox>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <functional>
#include <memory>

#include "ui/editor/editor_actions.h"
#include "ui/window/appearance/window_colours.h"
#include "ui/window/letter/find_panel.h"
#include "ui/window/letter/letter_output.h"
#include "ui/window/letter/letter_spelling.h"
#include "ui/window/letter/lint_panel.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/main/generate_letters.h"
#include "ui/window/main/help_commands.h"
#include "ui/window/main/import_templates.h"
#include "ui/window/main/insert_menus.h"
#include "ui/window/main/letter_runs.h"
#include "ui/window/main/queued_runs.h"
#include "ui/window/main/settings_commands.h"
#include "ui/window/recovery/letter_keeper.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

// The parts that implement the commands.
struct MenuParts {
  Session& session;
  ctlTree& tree;
  LetterDesk& desk;
  OpenLetters& letters;
  LetterKeeper& keeper;
  LetterOutput& output;
  LetterSpelling& spelling;
  LintPanel& lint_panel;
  FindPanel& find_panel;
  GenerateLetters& generate;
  LetterRuns& runs;
  QueuedRuns& queued_runs;
  ImportTemplates& imports;
  RentalDataLoad& rental_data;
  SettingsCommands& settings;
  HelpCommands& help;
  WindowColours& colours;
  EditorActions& editor_actions;
  QAction& page_layout;
  QAction& page_width;  // toggles wrapping at the page width
};

class MainMenus : public QObject {
  Q_OBJECT

 public:
  // Fills the window's menu bar and adds the tool bars. All parts must outlive this object.
  MainMenus(QMainWindow& window, const MenuParts& parts);

  // Enables the commands that apply to the letter in front, null if none is open, and shows its
  // codes in the insert menus.
  void ShowLetter(const LetterWindow* front);
  void DisplayInsertMenu();
  void FillCustomMenus(const CustomFieldCodes& codes) { insert_menus_->FillCustomMenus(codes); }

  QAction& generate_action() { return *generate_action_; }
  QAction& mail_action() { return *mail_action_; }
  QAction& print_action() { return *print_action_; }

 private:
  struct Look {
    const char* icon = nullptr;
    QKeySequence keys = {};
    QString tip = {};
  };
  using Body = std::function<void()>;

  // A menu command named "mnuPrint"; an error in it is shown under "frmMain - mnuPrint_Click".
  QAction* Command(QMenu* menu, const char* name, const QString& text, const Look& look, Body body);
  // A command on the letter in front; disabled without one. One that reads a letter is for what is
  // seen, the preview too; one that writes is disabled during a preview.
  QAction* LetterCommand(QMenu* menu, const char* name, const QString& text, const Look& look,
                         const std::function<void(frmLetter& letter)>& command);
  QAction* ReadingCommand(QMenu* menu, const char* name, const QString& text, const Look& look,
                          const std::function<void(frmLetter& letter)>& command);
  QAction* WritingCommand(QMenu* menu, const char* name, const QString& text, const Look& look,
                          const std::function<void(frmLetter& letter)>& command);

  QMenu* AddMenu(const char* name, const QString& title);
  void BuildFileMenu();
  // The letters opened last; those whose file is gone are greyed.
  void BuildRecentMenu(QMenu& file);
  void ListRecent(QMenu& recent);
  void BuildEditMenu();
  void BuildViewMenu();
  void BuildInsertMenu();
  void BuildFormatMenu();
  void BuildToolsMenu();
  void BuildColourMenu(QMenu& tools);
  void BuildWindowMenu();
  void BuildHelpMenu();
  void BuildToolBar();
  void BuildFormatBar();
  // Lists the open letters at the end of the window menu, with a check mark on the one in front.
  void ListLetters(QMenu& windows);
  void BuildPreviewMenu(QMenu& view);
  // Prints the letter in front. One that is previewed is generated, which prints it as it is then.
  void Print();
  // Starts a template of the kind whose codes the insert menus show.
  void StartNewInList();

  QMainWindow& window_;
  MenuParts parts_;
  QComboBox* insert_combo_ = nullptr;
  std::unique_ptr<InsertMenus> insert_menus_;
  QList<QAction*> letter_commands_;   // disabled without a letter
  QList<QAction*> writing_commands_;  // of those, disabled while a letter is only looked at
  QList<QAction*> preview_commands_;  // disabled without a preview
  QList<QAction*> listed_letters_;    // the letters in the window menu, as last shown
  QAction* format_action_ = nullptr;
  QAction* generate_action_ = nullptr;
  QAction* mail_action_ = nullptr;
  QAction* print_action_ = nullptr;
  QAction* preview_action_ = nullptr;
};

}  // namespace tenora
