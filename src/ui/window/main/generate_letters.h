// The Generate command: determines the template, asks for the recipients and starts the run.
#pragma once

#include <QWidget>
#include <optional>

#include "letters/recipients.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/main/letter_runs.h"
#include "ui/window/main/queued_runs.h"
#include "ui/window/main/rental_data_load.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class GenerateLetters {
 public:
  // Everything passed in must outlive this object. `window` is the parent of the dialog.
  GenerateLetters(Session& session, ctlTree& tree, OpenLetters& letters, WindowPrinters& printers,
                  RentalDataLoad& rental_data, LetterRuns& runs, QueuedRuns& queued_runs,
                  QWidget* window)
      : session_(session),
        tree_(tree),
        letters_(letters),
        printers_(printers),
        rental_data_(rental_data),
        runs_(runs),
        queued_runs_(queued_runs),
        window_(window) {}

  // Generates from the template selected in the tree, else from the one in front. Raises what the
  // generation raises, and 482 (Printer error) if printing was chosen and the printers could not be
  // loaded.
  void Generate();
  // Generates a letter to a tenant or owner, from the template in front or one the user chooses.
  void GenerateFor(const TreeModel::Entry& recipient);
  // Generates from the template in front, with this recipient ticked.
  void GenerateFront(const Recipient& recipient);

 private:
  std::optional<TreeModel::Entry> SelectedTemplate() const;
  std::optional<TreeModel::Entry> TemplateInFront() const;
  // Says why there is no template to generate from.
  void TellNoTemplate();
  std::optional<TreeModel::Entry> TemplateFor(const TreeModel::Entry& recipient);
  // Asks for recipients and destination; `preselected` is ticked initially.
  void GenerateFrom(const TreeModel::Entry& letter_template,
                    const std::optional<Recipient>& preselected);

  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  WindowPrinters& printers_;
  RentalDataLoad& rental_data_;
  LetterRuns& runs_;
  QueuedRuns& queued_runs_;
  QWidget* window_;
};

}  // namespace tenora
