// What leaves the window as paper, PDF or e-mail. Each works on a copy of the letter, so that the
// open one can be painted meanwhile.
#pragma once

#include <QWidget>
#include <functional>

#include "letters/frm_letter.h"
#include "platform/printing/printing.h"
#include "ui/window/background/background_work.h"

namespace tenora {

class LetterOutput {
 public:
  using Work = std::function<void(WorkProgress& progress)>;
  // Runs work beside the windows, as RunInBackground does.
  using Runner = std::function<void(const QString& title, const Work& work)>;

  LetterOutput(Session& session, printing::Printers& printers, Runner run)
      : session_(session), printers_(printers), run_(std::move(run)) {}

  // Where the PDF printer writes is up to date.
  printing::Printers& Printers() {
    printers_.SetDataFolder(session_.database.DataFolder());
    return printers_;
  }

  // Asks for the printer. False when nothing was printed; the PDF printer's file is told.
  bool Print(frmLetter& letter);
  // Asks where to.
  void ExportPdf(frmLetter& letter);
  // Asks for the subject. False when nothing was sent.
  bool Email(frmLetter& letter);
  // The letter as it will lie on the current printer's paper.
  void Preview(frmLetter& letter, QWidget* parent);

  std::function<void(const QString& message)> Tell;
  // Its paper may be another now.
  std::function<void()> PrinterChosen;
  // The print command of a preview.
  std::function<void()> PrintFromPreview;

 private:
  bool PrintOne(frmLetter& letter);

  Session& session_;
  printing::Printers& printers_;
  Runner run_;
};

}  // namespace tenora
