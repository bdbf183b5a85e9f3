// Prints, exports and e-mails a letter, and shows its print preview. Each works on a copy, so that
// the open letter can be repainted in the meantime. A generated letter in which something is wrong
// is printed, exported or e-mailed only on the user's word; a warning is shown and stops nothing.
#pragma once

#include <QObject>
#include <QWidget>
#include <optional>
#include <string>
#include <utility>

#include "letters/frm_letter.h"
#include "letters/unfinished_runs.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/letter/window_printers.h"

namespace tenora {

class LetterOutput : public QObject {
  Q_OBJECT

 public:
  // Everything passed in must outlive this object. `run` runs the long tasks.
  LetterOutput(Session& session, WindowPrinters& printers, OpenLetters& letters, WorkRunner run)
      : session_(session), printers_(printers), letters_(letters), run_(std::move(run)) {}

  // Asks for the printer. False when nothing was printed; the PDF printer's file is told. Raises
  // 482 (Printer error) where the printers could not be read, as Preview does.
  bool Print(frmLetter& letter);
  // Asks for the file.
  void ExportPdf(frmLetter& letter);
  // Asks for the subject, and where several recipients have the name of the letter's and nothing
  // says for which of them it was made, for that. False when nothing was sent.
  bool Email(frmLetter& letter);
  // Opens the print preview, laid out for the current printer.
  void Preview(frmLetter& letter, QWidget* parent);

 signals:
  // The outcome, for the status bar.
  void Told(const QString& message);
  // The user chose Print in a preview.
  void PrintAsked();

 private:
  // False when the user leaves a letter in which something is wrong; `question` is "Print it
  // anyway?" and the like.
  bool MayLeave(const frmLetter& letter, const char* question);
  // The recipient of an e-mail as it is shown; of several of one name, who the letter then is for.
  // None when the user cancels.
  std::optional<std::string> Recipient(frmLetter& letter);
  // What is offered as an e-mail's subject.
  std::string SubjectOf(const frmLetter& letter);
  // Asks for the printer; again where the letter has none of the pages that were chosen.
  bool PrintOne(printing::Printers& printers, frmLetter& letter);
  bool PrintChosen(printing::Printers& printers, frmLetter& letter);
  // In the run that holds the letter back, so that resuming it does not do so again.
  void Note(const frmLetter& letter, const HandedOver& handed);

  Session& session_;
  WindowPrinters& printers_;
  OpenLetters& letters_;
  WorkRunner run_;
};

}  // namespace tenora
