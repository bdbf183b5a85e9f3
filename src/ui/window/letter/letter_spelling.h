// Spelling in the open letters: underlines misspelt words as they are typed, and runs the spelling
// check.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/spelling/spelling.h"
#include "ui/window/letter/letter_desk.h"

namespace tenora {

class LetterSpelling {
 public:
  // `window` is the parent of the dialog.
  LetterSpelling(Session& session, LetterDesk& desk, QWidget* window)
      : session_(session), desk_(desk), window_(window) {}

  // Loads the dictionaries chosen in the settings and updates the underlines of every open letter.
  // Without a dictionary nothing is underlined; the check reports what is missing.
  void Load();
  void Underline(LetterWindow& letter) const;
  // Asks about every misspelt word of the letter.
  void Check(frmLetter& letter);

 private:
  Session& session_;
  LetterDesk& desk_;
  QWidget* window_;
  std::shared_ptr<spelling::Speller> speller_;  // null if nothing is to be underlined
};

}  // namespace tenora
