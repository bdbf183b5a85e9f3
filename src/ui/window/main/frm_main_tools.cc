// The main window's generation, spelling and settings.
#include <QApplication>
#include <QStatusBar>
#include <algorithm>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "output/spelling_choice.h"
#include "platform/dialogs/guard.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/dialogs/frm_printer.h"
#include "ui/dialogs/frm_receipt.h"
#include "ui/dialogs/frm_settings.h"
#include "ui/dialogs/frm_spell_check.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

bool Generates(const std::string& kind) { return kind == kTemplates || kind == kOwnerTemplates; }

// Shows a run's progress, and stops it where the user asks to.
class ShownGeneration : public GenerationObserver {
 public:
  explicit ShownGeneration(WorkProgress& progress) : progress_(progress) {}

  void Started(std::size_t count, const std::filesystem::path&) override {
    total_ = static_cast<int>(count);
    Report({});
  }
  void LetterFinished(const LetterReport& report) override {
    done_ = std::min(done_ + 1, total_);
    Report(QString::fromStdString(report.recipient.name));
    if (!report.file.empty()) last_file_ = report.file;
  }
  bool StopAsked() override { return progress_.Cancelled(); }

  const std::filesystem::path& last_file() const { return last_file_; }

 private:
  void Report(const QString& name) {
    progress_.Report(done_, total_,
                     frmMain::tr("%1 of %2 letters   %3").arg(done_).arg(total_).arg(name));
  }

  WorkProgress& progress_;
  int done_ = 0, total_ = 0;
  std::filesystem::path last_file_;
};

}  // namespace

std::optional<TreeModel::Entry> frmMain::TemplateToGenerate() const {
  const TreeModel::Entry* entry = tree_->Current();
  if (entry != nullptr && entry->type == TreeModel::Type::kTemplate && Generates(entry->kind)) {
    return *entry;
  }
  return TemplateInFront();
}

std::optional<TreeModel::Entry> frmMain::TemplateInFront() const {
  LetterWindow* window = desk_->Active();
  if (window == nullptr || !Generates(window->letter().members().Kind)) return std::nullopt;
  const LetterMembers& members = window->letter().members();
  TreeModel::Entry open;
  open.kind = members.Kind;
  open.path = members.FilePath;
  // A run reads the library's file of this name, which is another than one opened from elsewhere.
  if (open.path.parent_path() != session_.database.DataFolder() / open.kind) return std::nullopt;
  open.name = QString::fromStdString(open.path.stem().string());
  return open;
}

void frmMain::GenerateLetters() {
  const std::optional<TreeModel::Entry> entry = TemplateToGenerate();
  if (!entry) {
    LetterWindow* front = desk_->Active();
    const bool outside = front != nullptr && Generates(front->letter().members().Kind);
    return dialogs().Say(outside ? "This template is not in the library yet. Save it there with "
                                   "\"Save As\", then generate its letters."
                                 : "Select a template in the left menu section first.");
  }
  GenerateFrom(*entry, std::nullopt);
}

void frmMain::GenerateFrom(const TreeModel::Entry& letter_template,
                           const std::optional<Recipient>& preselected) {
  // The run reads the file: what is written in the window must be in it.
  LetterWindow* open = desk_->OfFile(letter_template.path);
  if (open != nullptr && !open->letter().CheckSave()) return;

  frmGenerate choice(session_.caches, letter_template.kind, letter_template.name.toStdString(),
                     dialogs(), this);
  if (preselected) choice.Preselect(*preselected);
  if (choice.exec() != QDialog::Accepted) return;
  const GenerationRequest request = choice.Request();
  printing::Printers* printers = nullptr;
  if (request.destination == Destination::kPrinter) {
    printers = &Output().Printers();
    if (choice.UsesDefaultPrinter()) {
      printers->UseDefault();
    } else if (!printers->Choose(dialogs())) {
      return;
    }
    ShowPages();
  }
  RunGeneration([&](GenerationObserver& observer) {
    return GenerateSelection(session_, request, choice.Selection(), observer, printers);
  });
}

void frmMain::RunGeneration(const std::function<GenerationSummary(GenerationObserver&)>& run) {
  GenerationSummary summary;
  std::filesystem::path file;
  RunBeside(tr("Generating"), [&](WorkProgress& progress) {
    ShownGeneration shown(progress);
    summary = run(shown);
    file = shown.last_file();
  });
  tree_->RefreshTree();
  if (summary.asked == 0) return;  // nothing was begun, and the reason has been shown
  statusBar()->showMessage(tr("%1 of %2 letters were made.").arg(summary.done).arg(summary.asked));
  if (summary.complete()) {
    if (summary.asked == 1 && !file.empty()) OpenListed(file);
    return;
  }
  std::string text =
      std::to_string(summary.done) + " of " + std::to_string(summary.asked) + " letters were made.";
  for (const LetterReport& report : summary.in_doubt) {
    text += "\r\n" + report.recipient.name + ": " + report.problem;
  }
  if (summary.log.empty() || summary.done + summary.in_doubt.size() == summary.asked) {
    return dialogs().Say(text);
  }
  const bool again = dialogs().Show({.text = text + "\r\nMake the missing letters now?",
                                     .buttons = Buttons::kYesNo,
                                     .icon = Icon::kQuestion,
                                     .default_answer = Answer::kNo}) == Answer::kYes;
  if (!again) return;
  RunGeneration([this, log = summary.log](GenerationObserver& observer) {
    return Generation(session_, AfterError::kStop, observer, printers_.get()).Resume(log);
  });
}

bool frmMain::OpenListed(const std::filesystem::path& path) {
  for (const char* group : {"Tenants", "Owners"}) {
    const QModelIndex entry =
        tree_->model().FindFile(tree_->model().Group(QLatin1String(group)), path);
    if (!entry.isValid()) continue;
    OpenEntry(TreeModel::Entry(*tree_->model().EntryAt(entry)));
    return true;
  }
  return false;
}

void frmMain::CheckSpelling(frmLetter& letter) {
  SpellChecker checker(dialogs(),
                       [this] { return spelling::Speller::Open(SpellingOptions(session_)); });
  checker.AskForWord = [this](const std::string& word, spelling::Speller& speller) {
    frmSpellCheck ask(word, speller, dialogs(), this);
    ask.exec();
    return ask.Chosen();
  };
  checker.ShowWaitCursor = [](bool waiting) {
    waiting ? QApplication::setOverrideCursor(Qt::WaitCursor)
            : QApplication::restoreOverrideCursor();
  };
  checker.SpellCheck(letter.rtfLetter);
  LoadSpeller();  // words may have been added
}

void frmMain::LoadSpeller() {
  speller_.reset();
  if (UnderlinesMisspelt(session_.settings)) {
    try {
      speller_ = spelling::Speller::Open(SpellingOptions(session_));
    } catch (const RuntimeError&) {
      // Without a dictionary nothing is underlined; the spelling check says what is missing.
    }
  }
  for (LetterWindow* window : desk_->Letters()) UnderlineIn(*window);
}

void frmMain::UnderlineIn(LetterWindow& window) {
  if (speller_ == nullptr) return window.editor().SetMisspelt({});
  window.editor().SetMisspelt(
      [speller = speller_](const QString& word) { return speller->Misspelt(word.toStdString()); });
}

void frmMain::ShowReceiptOptions(bool receipts) {
  const TemplateLibrary library(session_.database.DataFolder());
  frmReceipt(
      receipts ? frmReceipt::DocumentKind::kReceipt : frmReceipt::DocumentKind::kInspectionLetter,
      session_.settings, dialogs(), library.Names(kTemplates), kApplicationTitle, this)
      .exec();
}

void frmMain::ShowSettings() {
  if (frmSettings(session_, this).exec() != QDialog::Accepted) return;
  LoadSpeller();
  page_width_action_->setChecked(
      session_.settings.GetSettingText("Mail", "PrinterPageWidth", "0") != "0");
  ShowPages();
  LoadRentalData();
  tree_->RefreshTree();
}

void frmMain::ShowPrinterSetup() {
  if (frmPrinter(session_.settings, dialogs(), this).exec() != QDialog::Accepted) return;
  ShowPages();
}

}  // namespace tenora
