// The Generate command: finds the template, asks for whom, runs with its progress shown, and says
// at the end what was made and what was not.
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
  // All outlive this; `run` runs the generation, and the dialog stands over `window`.
  GenerateLetters(Session& session, ctlTree& tree, OpenLetters& letters, WindowPrinters& printers,
                  WorkRunner run, QWidget* window)
      : session_(session),
        tree_(tree),
        letters_(letters),
        printers_(printers),
        run_(std::move(run)),
        window_(window) {}

  // Letters from the template selected in the tree, else from the one in front. Raises what the
  // generation raises, and 482 (Printer error) where the printers are wanted and could not be read.
  void Generate();
  // Letters for this tenant or owner, from the template in front or one that is asked for.
  void GenerateFor(const TreeModel::Entry& recipient);

 signals:
  // How it went, for the status bar.
  void Told(const QString& message);

 private:
  std::optional<TreeModel::Entry> SelectedTemplate() const;
  std::optional<TreeModel::Entry> TemplateInFront() const;
  std::optional<TreeModel::Entry> TemplateFor(const TreeModel::Entry& recipient);
  // Asks for whom and where to; `preselected` is ticked already.
  void GenerateFrom(const TreeModel::Entry& letter_template,
                    const std::optional<Recipient>& preselected);
  void Run(const std::function<GenerationSummary(GenerationObserver&)>& run);
  // Tells of what is missing; true where the user wants it made now.
  bool WantsMissing(const GenerationSummary& summary);

  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  WindowPrinters& printers_;
  WorkRunner run_;
  QWidget* window_;
};

}  // namespace tenora
