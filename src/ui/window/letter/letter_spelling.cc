#include "ui/window/letter/letter_spelling.h"

#include <QApplication>
#include <utility>
#include <vector>

#include "output/spelling_choice.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/error.h"
#include "ui/dialogs/frm_spell_check.h"

namespace tenora {
namespace {

using Ignored = std::shared_ptr<std::set<std::string>>;

// Remembers the words that are ignored, for the spellers that are opened later.
class RememberingSpeller : public spelling::Speller {
 public:
  RememberingSpeller(std::unique_ptr<Speller> speller, Ignored ignored)
      : speller_(std::move(speller)), ignored_(std::move(ignored)) {
    for (const std::string& word : *ignored_) speller_->IgnoreAll(word);
  }
  const std::string& Language() const override { return speller_->Language(); }
  bool Misspelt(std::string_view word) const override { return speller_->Misspelt(word); }
  std::vector<std::string> Suggestions(std::string_view word) const override {
    return speller_->Suggestions(word);
  }
  void AddWord(std::string_view word) override { speller_->AddWord(word); }
  void IgnoreAll(std::string_view word) override {
    ignored_->emplace(word);
    speller_->IgnoreAll(word);
  }

 private:
  std::unique_ptr<Speller> speller_;
  Ignored ignored_;
};

}  // namespace

std::unique_ptr<spelling::Speller> LetterSpelling::Open() const {
  return std::make_unique<RememberingSpeller>(spelling::Speller::Open(SpellingOptions(session_)),
                                              ignored_);
}

void LetterSpelling::Load() {
  speller_.reset();
  if (UnderlinesMisspelt(session_.settings)) {
    try {
      speller_ = Open();
    } catch (const RuntimeError&) {
    }
  }
  UnderlineAll();
}

void LetterSpelling::UnderlineAll() const {
  for (LetterWindow* letter : desk_.Letters()) Underline(*letter);
}

void LetterSpelling::Underline(LetterWindow& letter) const {
  if (speller_ == nullptr) return letter.editor().SetSpelling({});
  LetterEditor::Spelling spelling;
  spelling.misspelt = [speller = speller_](const QString& word) {
    return speller->Misspelt(word.toStdString());
  };
  spelling.suggestions = [speller = speller_](const QString& word) {
    QStringList suggestions;
    for (const std::string& each : speller->Suggestions(word.toStdString())) {
      suggestions << QString::fromStdString(each);
    }
    return suggestions;
  };
  spelling.add = [this, speller = speller_](const QString& word) {
    // A word that cannot be saved is accepted for this run.
    Guarded(session_.platform.dialogs, "frmLetter - mnuAddWord_Click",
            [&] { speller->AddWord(word.toStdString()); });
    UnderlineAll();
  };
  spelling.ignore = [this, speller = speller_](const QString& word) {
    speller->IgnoreAll(word.toStdString());
    UnderlineAll();
  };
  letter.editor().SetSpelling(std::move(spelling));
}

void LetterSpelling::Check(frmLetter& letter) {
  Dialogs& dialogs = session_.platform.dialogs;
  SpellChecker checker(dialogs, [this] { return Open(); });
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
