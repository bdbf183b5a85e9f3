// The Generate command: determines the template, asks for the recipients, runs the generation with
// its progress shown, and reports which letters were made and which were not.
#pragma once

#include <QObject>
#include <QWidget>
#include <functional>
#include <optional>
#include <utility>

#include "letters/generation.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class GenerateLetters : public QObject {
  Q_OBJECT

 public:
  // Everything passed in must outlive this object. `run` runs the generation; `window` is the
  // parent of the dialog.
  GenerateLetters(Session& session, ctlTree& tree, OpenLetters& letters, WindowPrinters& printers,
                  WorkRunner run, QWidget* window)
      : session_(session),
        tree_(tree),
        letters_(letters),
        printers_(printers),
        run_(std::move(run)),
        window_(window) {}

  // Generates from the template selected in the tree, else from the one in front. Raises what the
  // generation raises, and 482 (Printer error) if printing was chosen and the printers could not be
  // loaded.
  void Generate();
  // Generates a letter to a tenant or owner, from the template in front or one the user chooses.
  void GenerateFor(const TreeModel::Entry& recipient);

 signals:
  // The outcome, for the status bar.
  void Told(const QString& message);

 private:
  std::optional<TreeModel::Entry> SelectedTemplate() const;
  std::optional<TreeModel::Entry> TemplateInFront() const;
  std::optional<TreeModel::Entry> TemplateFor(const TreeModel::Entry& recipient);
  // Asks for recipients and destination; `preselected` is ticked initially.
  void GenerateFrom(const TreeModel::Entry& letter_template,
                    const std::optional<Recipient>& preselected);
  void Run(const std::function<GenerationSummary(GenerationObserver&)>& run);
  // Reports the missing letters; true if the user wants them made now.
  bool WantsMissing(const GenerationSummary& summary);

  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  WindowPrinters& printers_;
  WorkRunner run_;
  QWidget* window_;
};

}  // namespace tenora
