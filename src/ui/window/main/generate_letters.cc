#include "ui/window/main/generate_letters.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "letters/template_library.h"
#include "ui/dialogs/frm_generate.h"

namespace tenora {
namespace {

using Entry = TreeModel::Entry;

constexpr std::size_t kMostNamed = 20;  // letters that failed, in the box after a run

bool Generates(const std::string& kind) { return kind == kTemplates || kind == kOwnerTemplates; }

// Passes on a run's progress, and stops the run when the user cancels.
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
    if (!report.file.empty()) last_ = report;
  }
  bool StopAsked() override { return progress_.Cancelled(); }

  // The last letter that has a file.
  const LetterReport& last() const { return last_; }

 private:
  void Report(const QString& name) {
    progress_.Report(done_, total_,
                     GenerateLetters::tr("%1 of %2 letters   %3").arg(done_).arg(total_).arg(name));
  }

  WorkProgress& progress_;
  int done_ = 0, total_ = 0;
  LetterReport last_;
};

}  // namespace

std::optional<Entry> GenerateLetters::SelectedTemplate() const {
  const Entry* entry = tree_.Current();
  if (entry == nullptr || entry->type != TreeModel::Type::kTemplate || !Generates(entry->kind)) {
    return std::nullopt;
  }
  return *entry;
}

std::optional<Entry> GenerateLetters::TemplateInFront() const {
  const LetterWindow* window = letters_.Active();
  if (window == nullptr || !Generates(window->letter().members().Kind)) return std::nullopt;
  const LetterMembers& members = window->letter().members();
  Entry open;
  open.kind = members.Kind;
  open.path = members.FilePath;
  // A run reads the template from the library; a file opened from elsewhere is a different one.
  if (open.path.parent_path() != session_.database.DataFolder() / open.kind) return std::nullopt;
  open.name = QString::fromStdString(open.path.stem().string());
  return open;
}

void GenerateLetters::Generate() {
  std::optional<Entry> entry = SelectedTemplate();
  if (!entry) entry = TemplateInFront();
  if (entry) return GenerateFrom(*entry, std::nullopt);
  const LetterWindow* front = letters_.Active();
  const bool outside = front != nullptr && Generates(front->letter().members().Kind);
  session_.platform.dialogs.Say(outside
                                    ? "This template is not in the library yet. Save it there with "
                                      "\"Save As\", then generate its letters."
                                    : "Select a template in the left menu section first.");
}

std::optional<Entry> GenerateLetters::TemplateFor(const Entry& recipient) {
  const std::string_view kind =
      recipient.type == TreeModel::Type::kOwner ? kOwnerTemplates : kTemplates;
  std::optional<Entry> front = TemplateInFront();
  if (front && front->kind == kind) return front;
  Dialogs& dialogs = session_.platform.dialogs;
  const TemplateLibrary library(session_.database.DataFolder());
  const std::vector<std::string> names = library.Names(kind);
  if (names.empty()) {
    dialogs.Say("There is no template in the '" + std::string(kind) + "' group yet.");
    return std::nullopt;
  }
  const auto chosen = dialogs.Choose("Template of the letter to " + recipient.recipient, names, 0);
  if (!chosen) return std::nullopt;
  Entry entry;
  entry.kind = kind;
  entry.name = QString::fromStdString(names[*chosen]);
  entry.path = library.PathOf(kind, names[*chosen]);
  return entry;
}

void GenerateLetters::GenerateFor(const Entry& recipient) {
  if (const std::optional<Entry> letter_template = TemplateFor(recipient)) {
    GenerateFrom(*letter_template, Recipient{recipient.recipient, recipient.tenant_code});
  }
}

void GenerateLetters::GenerateFrom(const Entry& letter_template,
                                   const std::optional<Recipient>& preselected) {
  // The run reads the file, so unsaved changes must be saved first.
  LetterWindow* open = letters_.OfFile(letter_template.path);
  if (open != nullptr && !open->letter().CheckSave()) return;

  Dialogs& dialogs = session_.platform.dialogs;
  frmGenerate choice(session_.caches, letter_template.kind, letter_template.name.toStdString(),
                     dialogs, window_);
  if (preselected) choice.Preselect(*preselected);
  if (choice.exec() != QDialog::Accepted) return;
  const GenerationRequest request = choice.Request();
  printing::Printers* printers = nullptr;
  if (request.destination == Destination::kPrinter) {
    printers = &printers_.Get();
    if (choice.UsesDefaultPrinter()) {
      printers->UseDefault();
    } else if (!printers->Choose(dialogs)) {
      return;
    }
    letters_.ShowPages();
  }
  Run([&](GenerationObserver& observer) {
    return GenerateSelection(session_, request, observer, printers);
  });
}

void GenerateLetters::Run(const std::function<GenerationSummary(GenerationObserver&)>& run) {
  GenerationSummary summary;
  LetterReport last;
  run_(tr("Generating"), [&](WorkProgress& progress) {
    ShownGeneration shown(progress);
    summary = run(shown);
    last = shown.last();
  });
  tree_.RefreshTree();
  if (summary.asked == 0) return;  // nothing was started, and the reason has been shown
  emit Told(tr("%1 of %2 letters were made.").arg(summary.done).arg(summary.asked));
  if (summary.complete()) {
    if (summary.asked == 1 && !last.file.empty()) {
      letters_.OpenListed(last.file, last.recipient.code);
    }
    return;
  }
  if (!WantsMissing(summary)) return;
  Run([this, log = summary.log](GenerationObserver& observer) {
    return Generation(session_, AfterError::kStop, observer, printers_.IfRead()).Resume(log);
  });
}

bool GenerateLetters::WantsMissing(const GenerationSummary& summary) {
  Dialogs& dialogs = session_.platform.dialogs;
  std::string text =
      std::to_string(summary.done) + " of " + std::to_string(summary.asked) + " letters were made.";
  std::size_t named = 0;
  for (const LetterReport& report : summary.failed) {
    if (++named > kMostNamed) break;
    text += "\r\n" + report.recipient.name + ": " + report.problem;
  }
  if (named > kMostNamed) {
    text += "\r\n" + std::to_string(summary.failed.size() - kMostNamed) + " more failed.";
  }
  for (const LetterReport& report : summary.in_doubt) {
    text += "\r\n" + report.recipient.name + ": " + report.problem;
  }
  for (const LetterReport& report : summary.held) {
    text += "\r\nHeld back: " + report.recipient.name + ": " + report.problem;
  }
  if (summary.log.empty() || summary.failed.size() + summary.untouched() == 0) {
    dialogs.Say(text);
    return false;
  }
  return dialogs.Show({.text = text + "\r\nMake the missing letters now?",
                       .buttons = Buttons::kYesNo,
                       .icon = Icon::kQuestion,
                       .default_answer = Answer::kNo}) == Answer::kYes;
}

}  // namespace tenora
