// What leaves the window as paper, PDF or e-mail. Each works on a copy of the letter, so that the
// open one can be painted meanwhile.
#pragma once

#include <QObject>
#include <QWidget>
#include <utility>

#include "letters/frm_letter.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"

namespace tenora {

class LetterOutput : public QObject {
  Q_OBJECT

 public:
  // All outlive this; `run` runs the long work.
  LetterOutput(Session& session, WindowPrinters& printers, OpenLetters& letters, WorkRunner run)
      : session_(session), printers_(printers), letters_(letters), run_(std::move(run)) {}

  // Asks for the printer. False when nothing was printed; the PDF printer's file is told. Raises
  // 482 (Printer error) where the printers could not be read, as Preview does.
  bool Print(frmLetter& letter);
  // Asks where to.
  void ExportPdf(frmLetter& letter);
  // Asks for the subject. False when nothing was sent.
  bool Email(frmLetter& letter);
  // The letter as it will lie on the current printer's paper.
  void Preview(frmLetter& letter, QWidget* parent);

 signals:
  // How it went, for the status bar.
  void Told(const QString& message);
  // The print command of a preview.
  void PrintAsked();

 private:
  bool PrintOne(printing::Printers& printers, frmLetter& letter);

  Session& session_;
  WindowPrinters& printers_;
  OpenLetters& letters_;
  WorkRunner run_;
};

}  // namespace tenora
