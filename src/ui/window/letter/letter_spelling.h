// Spelling in the open letters: underlines misspelt words as they are typed, with suggestions in
// their context menu, and runs the spelling check.
#pragma once

#include <QWidget>
#include <memory>
#include <set>
#include <string>

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
  // With the words that are to be ignored until the program ends.
  std::unique_ptr<spelling::Speller> Open() const;
  void UnderlineAll() const;

  Session& session_;
  LetterDesk& desk_;
  QWidget* window_;
  std::shared_ptr<spelling::Speller> speller_;  // null if nothing is to be underlined
  std::shared_ptr<std::set<std::string>> ignored_ = std::make_shared<std::set<std::string>>();
};

}  // namespace tenora
