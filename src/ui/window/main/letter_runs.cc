#include "ui/window/main/letter_runs.h"

#include <QDesktopServices>
#include <QUrl>
#include <algorithm>
#include <set>
#include <string>

#include "platform/query/engine.h"
#include "ui/dialogs/frm_run_report.h"
#include "ui/dialogs/frm_unfinished_runs.h"

namespace tenora {
namespace {

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
                     LetterRuns::tr("%1 of %2 letters   %3").arg(done_).arg(total_).arg(name));
  }

  WorkProgress& progress_;
  int done_ = 0, total_ = 0;
  LetterReport last_;
};

// These letters in this way, and no others.
ResumeWay Only(const std::vector<LetterReport>& letters, Resuming way) {
  std::set<std::size_t> numbers;
  for (const LetterReport& letter : letters) numbers.insert(letter.number);
  return [numbers, way](std::size_t number) {
    return numbers.contains(number) ? way : Resuming::kLeft;
  };
}

// All but those that a person is to look at first.
ResumeWay OnlyMissing(const GenerationSummary& summary) {
  std::set<std::size_t> others;
  for (const auto* letters : {&summary.held, &summary.no_address}) {
    for (const LetterReport& letter : *letters) others.insert(letter.number);
  }
  return [others](std::size_t number) {
    return others.contains(number) ? Resuming::kLeft : Resuming::kUsual;
  };
}

}  // namespace

void LetterRuns::Run(Destination destination, const Letters& letters) {
  GenerationSummary summary;
  LetterReport last;
  run_(tr("Generating"), [&](WorkProgress& progress) {
    ShownGeneration shown(progress);
    const query::StoppableWaiting waiting(session_.platform.workspace,
                                          [&progress] { return progress.Cancelled(); });
    summary = letters(shown);
    last = shown.last();
  });
  tree_.RefreshTree();
  if (summary.asked == 0) return;  // nothing was started, and the reason has been shown
  const MergedFiles& merged = summary.merged;
  QString told = tr("%1 of %2 letters were made.").arg(summary.done).arg(summary.asked);
  for (const std::filesystem::path& file : {merged.pdf, merged.post_list}) {
    if (!file.empty()) told += " " + QString::fromStdString(file.string());
  }
  emit Told(told);
  for (const std::string& problem : merged.problems) session_.platform.dialogs.Say(problem);
  if (!summary.complete()) {
    Settle(destination, summary);
  } else if (summary.asked == 1 && !last.file.empty()) {
    letters_.OpenListed(last.file);
  }
}

bool LetterRuns::Settle(Destination destination, const GenerationSummary& summary) {
  using Choice = frmRunReport::Choice;
  frmRunReport report(summary, destination, window_);
  report.exec();
  switch (report.choice()) {
    case Choice::kLeave:
      return true;
    case Choice::kOpen:
      Open(report.chosen());
      break;
    case Choice::kSendHeld:
      if (!CheckSaved(report.chosen())) break;
      Resume(destination, summary.log, Only(report.chosen(), Resuming::kAsItIs));
      break;
    case Choice::kPrint:
      if (!CheckSaved(report.chosen()) || !TakePrinter({})) break;
      Resume(destination, summary.log, Only(report.chosen(), Resuming::kOnPaper));
      break;
    case Choice::kMakeMissing:
      Resume(destination, summary.log, OnlyMissing(summary));
      break;
  }
  return false;
}

void LetterRuns::Resume(Destination destination, const std::filesystem::path& log,
                        const ResumeWay& way) {
  Run(destination, [&](GenerationObserver& observer) {
    return Generation(session_, AfterError::kStop, observer, printers_.IfRead()).Resume(log, way);
  });
}

void LetterRuns::Open(const std::vector<LetterReport>& reports) {
  for (const LetterReport& report : reports) {
    if (letters_.OpenListed(report.file)) continue;
    session_.platform.dialogs.Say("The tree does not list this letter any more:\r\n" +
                                  report.file.string());
  }
}

bool LetterRuns::CheckSaved(const std::vector<LetterReport>& reports) {
  return std::ranges::all_of(reports, [this](const LetterReport& report) {
    if (left_unsaved_(report.file)) {
      session_.platform.dialogs.Say(
          "Changes of this letter were not saved when Tenora last ended:\r\n" +
          report.file.string() +
          "\r\nRecover or discard them first (Tools, Recover Unsaved Letters).");
      return false;
    }
    LetterWindow* open = letters_.OfFile(report.file);
    return open == nullptr || open->letter().CheckSave();
  });
}

bool LetterRuns::TakePrinter(const std::string& wanted) {
  printing::Printers& printers = printers_.Get();
  if (!wanted.empty() && printers.SetCurrent(wanted)) return true;
  if (!printers.Choose(session_.platform.dialogs)) return false;
  letters_.ShowPages();
  return true;
}

bool LetterRuns::ShowUnfinished() {
  using Choice = frmUnfinishedRuns::Choice;
  for (bool shown = false;; shown = true) {
    const std::vector<UnfinishedRun> runs = FindUnfinishedRuns(session_.database.DataFolder());
    if (runs.empty()) return shown;
    frmUnfinishedRuns dialog(session_.platform.locale, runs, window_);
    dialog.exec();
    switch (dialog.choice()) {
      case Choice::kLater:
        return true;
      case Choice::kResume:
        if (ResumeAll(dialog.chosen())) return true;
        break;
      case Choice::kLook:
        if (!Look(dialog.chosen())) return true;
        break;
      case Choice::kForget:
        Forget(dialog.chosen());
        break;
    }
  }
}

bool LetterRuns::ResumeAll(const UnfinishedRun& run) {
  const Destination destination = run.request.destination;
  if (!CheckSaved(run.summary.held)) return false;
  if (destination == Destination::kPrinter && !TakePrinter(run.request.printer)) return false;
  Resume(destination, run.log, {});
  return true;
}

bool LetterRuns::Look(const UnfinishedRun& run) {
  if (run.problem.empty()) return Settle(run.request.destination, run.summary);
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(run.log.string())))) {
    session_.platform.dialogs.Say("No program of this desktop shows the log. It is:\r\n" +
                                  run.log.string());
  }
  return true;
}

void LetterRuns::Forget(const UnfinishedRun& run) {
  const Answer answer = session_.platform.dialogs.Show(
      {.text =
           "Forget the run of " + run.log.stem().string() +
           "?\r\n\r\nNo letter and no log is removed. What the run has left undone stays so, and "
           "is not offered any more.",
       .title = "Unfinished Runs",
       .buttons = Buttons::kYesNo,
       .icon = Icon::kQuestion,
       .default_answer = Answer::kNo});
  if (answer == Answer::kYes) ForgetRun(run.log, session_.platform.clock);
}

}  // namespace tenora
