// Runs of letters in the window: with their progress shown, what they leave reported, and resumed
// when they did not finish.
#pragma once

#include <QObject>
#include <QWidget>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "letters/generation.h"
#include "letters/unfinished_runs.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class LetterRuns : public QObject {
  Q_OBJECT

 public:
  using Letters = std::function<GenerationSummary(GenerationObserver& observer)>;

  // Whether changes of the letter in a file were left unsaved when the program last ended.
  using LeftUnsaved = std::function<bool(const std::filesystem::path& file)>;

  // Everything passed in must outlive this object. `run` runs the letters; `window` is the parent
  // of the dialogs.
  LetterRuns(Session& session, ctlTree& tree, OpenLetters& letters, WindowPrinters& printers,
             WorkRunner run, LeftUnsaved left_unsaved, QWidget* window)
      : session_(session),
        tree_(tree),
        letters_(letters),
        printers_(printers),
        run_(std::move(run)),
        left_unsaved_(std::move(left_unsaved)),
        window_(window) {}

  // Makes the letters; opens the only one that was asked for. What is left is shown, and done as
  // the user says. Raises what `letters` raises.
  void Run(Destination destination, const Letters& letters);
  // Shows the unfinished runs until the user leaves them or resumes one; false when there are none.
  // Raises what resuming raises.
  bool ShowUnfinished();

 signals:
  // The outcome, for the status bar.
  void Told(const QString& message);

 private:
  // Shows what a run has left and does what the user chooses. True when that is nothing.
  bool Settle(Destination destination, const GenerationSummary& summary);
  void Open(const std::vector<LetterReport>& reports);
  void Resume(Destination destination, const std::filesystem::path& log, const ResumeWay& way);
  // False when the user cancels.
  bool ResumeAll(const UnfinishedRun& run);
  // As Settle.
  bool Look(const UnfinishedRun& run);
  void Forget(const UnfinishedRun& run);
  // False when the user cancels.
  bool TakePrinter(const std::string& wanted);
  // Whether nothing of these letters waits to be saved in an open window, or to be recovered.
  bool CheckSaved(const std::vector<LetterReport>& reports);

  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  WindowPrinters& printers_;
  WorkRunner run_;
  LeftUnsaved left_unsaved_;
  QWidget* window_;
};

}  // namespace tenora
