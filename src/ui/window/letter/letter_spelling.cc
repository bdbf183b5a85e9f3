#include "ui/window/letter/letter_spelling.h"

#include <QApplication>

#include "output/spelling_choice.h"
#include "platform/runtime/error.h"
#include "ui/dialogs/frm_spell_check.h"

namespace tenora {

void LetterSpelling::Load() {
  speller_.reset();
  if (UnderlinesMisspelt(session_.settings)) {
    try {
      speller_ = spelling::Speller::Open(SpellingOptions(session_));
    } catch (const RuntimeError&) {
    }
  }
  for (LetterWindow* letter : desk_.Letters()) Underline(*letter);
}

void LetterSpelling::Underline(LetterWindow& letter) const {
  if (speller_ == nullptr) return letter.editor().SetMisspelt({});
  letter.editor().SetMisspelt(
      [speller = speller_](const QString& word) { return speller->Misspelt(word.toStdString()); });
}

void LetterSpelling::Check(frmLetter& letter) {
  Dialogs& dialogs = session_.platform.dialogs;
  SpellChecker checker(dialogs,
                       [this] { return spelling::Speller::Open(SpellingOptions(session_)); });
  checker.AskForWord = [&](const std::string& word, spelling::Speller& speller) {
    frmSpellCheck ask(word, speller, dialogs, window_);
    ask.exec();
    return ask.Chosen();
  };
  checker.ShowWaitCursor = [](bool waiting) {
    waiting ? QApplication::setOverrideCursor(Qt::WaitCursor)
            : QApplication::restoreOverrideCursor();
  };
  checker.SpellCheck(letter.rtfLetter);
  Load();  // words may have been added
}

}  // namespace tenora
