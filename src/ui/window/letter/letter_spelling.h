// The spelling of the open letters: misspelt words underlined while they are written, and the check
// that asks about each.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/spelling/spelling.h"
#include "ui/window/letter/letter_desk.h"

namespace tenora {

class LetterSpelling {
 public:
  // The questions stand over `window`.
  LetterSpelling(Session& session, LetterDesk& desk, QWidget* window)
      : session_(session), desk_(desk), window_(window) {}

  // Reads the dictionaries of the settings and underlines anew in every open letter. Without a
  // dictionary nothing is underlined; the check says what is missing.
  void Load();
  void Underline(LetterWindow& letter) const;
  // Asks about every misspelt word of the letter.
  void Check(frmLetter& letter);

 private:
  Session& session_;
  LetterDesk& desk_;
  QWidget* window_;
  std::shared_ptr<spelling::Speller> speller_;  // null where nothing is underlined
};

}  // namespace tenora
