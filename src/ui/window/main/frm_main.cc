#include "ui/window/main/frm_main.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QFile>
#include <QFontDatabase>
#include <QMimeData>
#include <QStatusBar>
#include <QVBoxLayout>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/dialogs/guard.h"
#include "platform/dialogs/window_size.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/help/frm_forms.h"
#include "ui/window/letter/letter_recipient.h"

namespace tenora {
namespace {

constexpr const char* kLoad = "MDIForm_Load";
constexpr const char* kDisplay = "MDIForm_Activate";
constexpr int kTellFor = 10000;   // milliseconds in the status bar
constexpr int kLowWindow = 480;   // pixels of a window with no room for two panels
constexpr int kLeastHeight = 84;  // pixels of the tree and the letters, below which panels may push
const QStringList kPreselectedFonts{QStringLiteral("Arial"), QStringLiteral("Times New Roman"),
                                    QStringLiteral("Courier")};

QAction* MakePageWidthAction(QObject* parent) {
  auto* action = new QAction(MainMenus::tr("Wrap at Printer's Page &Width"), parent);
  action->setObjectName(QStringLiteral("mnuPageWidth"));
  action->setCheckable(true);
  return action;
}

QAction* MakePageLayoutAction(QObject* parent) {
  auto* action = new QAction(MainMenus::tr("Page &Layout"), parent);
  action->setObjectName(QStringLiteral("mnuPageLayout"));
  action->setCheckable(true);
  action->setStatusTip(
      MainMenus::tr("Letters lie on their paper; without it, only the text is seen"));
  return action;
}

}  // namespace

frmMain::frmMain(const CommandParts& parts, QWidget* parent)
    : QMainWindow(parent),
      parts_(parts),
      session_(parts.session),
      splitter_(new QSplitter(this)),
      tree_(new ctlTree(session_, splitter_)),
      desk_(new LetterDesk(splitter_)),
      lint_panel_(new LintPanel(this)),
      find_panel_(new FindPanel(session_.platform.dialogs, this)),
      editor_actions_(new EditorActions(this)),
      page_layout_(MakePageLayoutAction(this)),
      page_width_(MakePageWidthAction(this)),
      colours_(session_.settings, this),
      printers_(session_),
      spelling_(session_, *desk_, this),
      letters_(session_, *tree_, *desk_, printers_, spelling_),
      keeper_(session_, *desk_, letters_),
      output_(session_, printers_, letters_,
              [this](const QString& title, const Work& work) { RunBeside(title, work); }),
      rental_data_(
          session_, [this](const QString& title, const Work& work) { RunBeside(title, work); },
          this),
      runs_(
          session_, *tree_, letters_, printers_,
          [this](const QString& title, const Work& work) { RunBeside(title, work); },
          [this](const std::filesystem::path& file) { return keeper_.HasLeft(file); }, this),
      queued_runs_(
          session_, letters_,
          [this](const QString& title, const Work& work) { RunBeside(title, work); }, this),
      generate_(session_, *tree_, letters_, printers_, rental_data_, runs_, queued_runs_, this),
      imports_(session_, *tree_, letters_, *lint_panel_,
               [this](const QString& title, const Work& work) { RunBeside(title, work); }),
      given_files_(session_, letters_, imports_),
      settings_(session_, *tree_, letters_, spelling_, rental_data_, *page_width_, this),
      help_(session_, *tree_, letters_, this),
      menus_(*this, {.session = session_,
                     .tree = *tree_,
                     .desk = *desk_,
                     .letters = letters_,
                     .keeper = keeper_,
                     .output = output_,
                     .spelling = spelling_,
                     .lint_panel = *lint_panel_,
                     .find_panel = *find_panel_,
                     .generate = generate_,
                     .runs = runs_,
                     .queued_runs = queued_runs_,
                     .imports = imports_,
                     .rental_data = rental_data_,
                     .settings = settings_,
                     .help = help_,
                     .colours = colours_,
                     .editor_actions = *editor_actions_,
                     .page_layout = *page_layout_,
                     .page_width = *page_width_}),
      status_(*statusBar(), *page_width_),
      tree_commands_(session_, *tree_, letters_, generate_, menus_.generate_action(),
                     menus_.mail_action()),
      layout_(session_.settings, *this, *splitter_, *tree_, *desk_) {
  setObjectName(QStringLiteral("frmMain"));
  setWindowTitle(QString::fromLatin1(kApplicationTitle));
  setWindowIcon(LineIcon("tenora"));
  resize(OpeningSize(*this, {1280, 800}));
  splitter_->setObjectName(QStringLiteral("SplitterVert"));
  splitter_->setChildrenCollapsible(false);
  // Far less than they ask for: on a small screen the panels take their room, not the screen's end.
  splitter_->setMinimumHeight(kLeastHeight);
  splitter_->addWidget(tree_);
  splitter_->addWidget(desk_);
  splitter_->setStretchFactor(1, 1);
  splitter_->setSizes({300, 980});
  auto* centre = new QWidget(this);
  auto* column = new QVBoxLayout(centre);
  column->setContentsMargins({});
  column->setSpacing(0);
  column->addWidget(splitter_, 1);
  column->addWidget(find_panel_);
  setCentralWidget(centre);
  setAcceptDrops(true);
  addDockWidget(Qt::BottomDockWidgetArea, lint_panel_);
  lint_panel_->hide();
  ConnectParts();
  ShowLetterState();
}

frmMain::~frmMain() {
  // Signals of letters being destroyed must not reach a partly destroyed window.
  disconnect(desk_, nullptr, this, nullptr);
}

void frmMain::ConnectParts() {
  tree_->FillContextMenu = [this](QMenu& menu, const TreeModel::Entry& entry) {
    tree_commands_.FillMenu(menu, entry);
  };
  connect(tree_, &ctlTree::Activated, this,
          [this](const TreeModel::Entry& entry) { letters_.Open(entry); });
  connect(desk_, &LetterDesk::ActiveChanged, this, &frmMain::ShowLetterState);
  // Once the letter, or the program that the files come from, has done with the drop.
  letters_.OnFilesGiven([this](const QStringList& files) {
    QMetaObject::invokeMethod(
        this, [this, files] { given_files_.TakeAllButPictures(files); }, Qt::QueuedConnection);
  });
  // Together they would leave nothing of the letter.
  connect(find_panel_, &FindPanel::Opened, this, [this] {
    if (height() < kLowWindow) lint_panel_->hide();
  });
  connect(lint_panel_, &QDockWidget::visibilityChanged, this, [this](bool shown) {
    if (shown && height() < kLowWindow && find_panel_->isVisible()) find_panel_->Leave();
  });
  letters_.ShowRuler(editor_actions_->ShowRuler()->isChecked());
  connect(editor_actions_->ShowRuler(), &QAction::toggled, this,
          [this](bool shown) { letters_.ShowRuler(shown); });
  // On a sheet, lines end with the paper.
  connect(page_layout_, &QAction::toggled, page_width_, &QAction::setDisabled);
  connect(page_layout_, &QAction::toggled, this, [this](bool pages) {
    Guard("mnuPageLayout_Click", [&] { letters_.ShowAsPages(pages); });
  });
  connect(page_layout_, &QAction::triggered, this, [this](bool pages) {
    session_.settings.SaveSettingText("Mail", "PageLayout", pages ? "1" : "0");
  });
  connect(page_width_, &QAction::toggled, this, [this](bool page_width) {
    Guard("chkPageWidth_Click", [&] {
      letters_.WrapAtPageWidth(page_width);
      ShowLetterState();
    });
  });
  connect(&output_, &LetterOutput::PrintAsked, &menus_.print_action(), &QAction::trigger);
  connect(&output_, &LetterOutput::Told, this,
          [this](const QString& message) { statusBar()->showMessage(message, kTellFor); });
  const auto tell = [this](const QString& message) { statusBar()->showMessage(message); };
  connect(&runs_, &LetterRuns::Told, this, tell);
  connect(&queued_runs_, &QueuedRuns::Told, this, tell);
  connect(&tree_commands_, &TreeCommands::Told, this, tell);
  connect(&rental_data_, &RentalDataLoad::Told, this, tell);
  connect(&rental_data_, &RentalDataLoad::Missing, tree_, &ctlTree::SetDatabaseMissing);
  connect(&rental_data_, &RentalDataLoad::Reloaded, tree_, &ctlTree::RefreshTree);
  connect(&rental_data_, &RentalDataLoad::Reloaded, this, [this] { letters_.RefreshPreviews(); });
  connect(&rental_data_, &RentalDataLoad::CustomFieldsRead, this,
          [this](const CustomFieldCodes& codes) {
            letters_.SetCustomFields(codes);
            menus_.FillCustomMenus(codes);
          });
}

template <typename Body>
void frmMain::Guard(const char* procedure, Body&& body) {
  Guarded(session_.platform.dialogs, std::string("frmMain - ") + procedure,
          std::forward<Body>(body));
}

void frmMain::MDIForm_Load() {
  Guard(kLoad, [this] { printers_.Load(parts_.make_printers); });
  Guard(kLoad, [this] { LoadPageWidth(); });
  Guard(kLoad, [this] { colours_.Apply(); });
  Guard(kLoad, [this] { tree_->model().MakeTopGroups(); });
  Guard(kLoad, [this] { session_.SetChequeWord(); });
  Guard(kLoad, [this] { LoadFonts(); });
  Guard(kLoad, [this] { rental_data_.Load(); });
  // The catalogue of merge codes is fixed; what remains is to show its list.
  Guard(kLoad, [this] { DisplayInsertMenu(); });
  Guard(kLoad, [this] { tree_->RefreshTree(); });
  Guard(kLoad, [this] { spelling_.Load(); });
  Guard(kLoad, [this] { layout_.Restore(); });
}

void frmMain::LoadPageWidth() {
  page_layout_->setChecked(session_.settings.GetSettingText("Mail", "PageLayout", "1") != "0");
  if (!printers_.HasPrinter()) return;
  const std::int16_t width =
      session_.settings.GetSettingAs(ToInt16, "Mail", "PrinterPageWidth", "0");
  page_width_->setChecked(width != 0);
}

// Printers use the fonts of the desktop; without a printer the list stays empty.
void frmMain::LoadFonts() {
  if (printers_.HasPrinter()) {
    editor_actions_->SetFonts(kPreselectedFonts, QFontDatabase::families());
  }
}

void frmMain::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (std::exchange(displayed_, true)) return;
  // Deferred until the window is on the screen, so that messages appear in front of it.
  QMetaObject::invokeMethod(
      this, [this] { Guard(kDisplay, [this] { FirstDisplay(); }); }, Qt::QueuedConnection);
}

// One after the other. Nothing lies over the letter that was recovered or named at the end.
void frmMain::FirstDisplay() {
  Guard(kDisplay, [this] { layout_.RestoreTree(); });
  if (parts_.command_line.Contains("/NewFormsInstalled")) {
    session_.platform.dialogs.Say(
        "New template forms have been installed.  They are available on the left side of the "
        "screen in the 'Templates' group");
  }
  bool shown = !parts_.files.empty();
  Guard(kDisplay, [&] { shown = runs_.ShowUnfinished() || shown; });
  Guard(kDisplay, [&] { shown = keeper_.OfferLeft(this) || shown; });
  OpenNamedFiles();
  if (!shown && frmForms::WantedAtStartup(session_.settings)) help_.ShowForms();
}

void frmMain::OpenNamedFiles() {
  QStringList files;
  for (const std::filesystem::path& file : parts_.files) {
    std::error_code unknown;
    if (std::filesystem::exists(file, unknown)) {
      files << QFile::decodeName(file.c_str());
    } else {
      Guard("OpenNamedFiles",
            [&] { throw StandardError(error_number::kFileNotFound, file.string()); });
    }
  }
  if (!files.isEmpty()) given_files_.Take(files);
}

void frmMain::closeEvent(QCloseEvent* event) {
  bool closed = false;
  Guard("MDIForm_QueryUnload", [&] {
    closed = desk_->CloseAll();
    if (closed) layout_.Store();
  });
  event->setAccepted(closed);
}

void frmMain::dragEnterEvent(QDragEnterEvent* event) {
  if (LetterEditor::FilesOf(*event->mimeData()).isEmpty()) return;
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void frmMain::dropEvent(QDropEvent* event) {
  event->setDropAction(Qt::CopyAction);
  event->accept();
  QMetaObject::invokeMethod(
      this, [this, files = LetterEditor::FilesOf(*event->mimeData())] { given_files_.Take(files); },
      Qt::QueuedConnection);
}

void frmMain::ShowLetterState() {
  LetterWindow* front = desk_->Active();
  menus_.ShowLetter(front);
  ShowTitle(front);
  find_panel_->SetLetter(front);
  lint_panel_->SetLetter(front);
  const LetterMembers* const letter = front == nullptr ? nullptr : &front->letter().members();
  status_.Show(letter, letter == nullptr ? std::string() : WhichRecipient(session_, *letter));
  LetterEditor* editor = front == nullptr ? nullptr : &front->shown_editor();
  if (editor_actions_->Editor() == editor) return;
  editor_actions_->SetEditor(editor);
  if (front != nullptr) letters_.MarkCodes(*front);
}

void frmMain::ShowTitle(const LetterWindow* front) {
  const QString program = QString::fromLatin1(kApplicationTitle);
  setWindowTitle(front == nullptr ? program : front->windowTitle() + " - " + program);
  setWindowModified(front != nullptr && front->isWindowModified());
}

void frmMain::RunBeside(const QString& title, const Work& work) {
  const auto hold = [this](bool held) {
    rental_data_.Hold(held);
    tree_->Hold(held);
  };
  hold(true);
  try {
    RunInBackground(this, title, work);
  } catch (...) {
    hold(false);
    throw;
  }
  hold(false);
}

}  // namespace tenora
