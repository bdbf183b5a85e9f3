// Checks a letter word by word. Merge codes are never checked, nor changed by a correction.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/spelling/spelling.h"

namespace tenora {

class SpellChecker {
 public:
  struct Choice {
    std::string replacement;  // empty: the word stays as it is
    bool stop = false;        // the rest of the letter is not checked
  };

  // `open_speller` runs at the start of each check; what it raises ends the check with a message.
  SpellChecker(Dialogs& dialogs, std::function<std::unique_ptr<spelling::Speller>()> open_speller)
      : dialogs_(dialogs), open_speller_(std::move(open_speller)) {}

  // Runs the whole check and ends with "Spell check complete", or the error; no message where
  // the user stopped it.
  void SpellCheck(RichTextBox& editor);

  // Replaces every occurrence of the word, in any letter case and inside longer words too. The
  // selection is restored.
  static void ReplaceAll(RichTextBox& editor, std::string_view word, std::string_view replacement);

  // The words of a text as they are checked: without merge codes and punctuation; words of
  // which nothing is left stay as empty ones.
  static std::vector<std::string> WordList(std::string_view text);

  // Shows one misspelt word; the speller is for its suggestions, and to add or ignore the word.
  std::function<Choice(const std::string& bad_word, spelling::Speller& speller)> AskForWord;
  // Shows or takes away the wait cursor; may be empty.
  std::function<void(bool waiting)> ShowWaitCursor;

 private:
  bool CheckWords(RichTextBox& editor, spelling::Speller& speller);

  Dialogs& dialogs_;
  std::function<std::unique_ptr<spelling::Speller>()> open_speller_;
};

}  // namespace tenora
