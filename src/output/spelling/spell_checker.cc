#include "output/spell_checker.h"

#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Taken out of words. Hyphens and digits stay.
constexpr std::string_view kPunctuation = "._?:;)(!'\",";

// The merge codes of a text, from "<<" to ">>".
std::vector<std::pair<std::size_t, std::size_t>> CodesOf(std::u16string_view text) {
  std::vector<std::pair<std::size_t, std::size_t>> codes;
  for (std::size_t from = 0;;) {
    const std::size_t start = text.find(u"<<", from);
    const std::size_t end =
        start == std::u16string_view::npos ? start : text.find(u">>", start + 2);
    if (end == std::u16string_view::npos) return codes;
    codes.emplace_back(start, end + 2);
    from = end + 2;
  }
}

std::string WithoutCodes(std::string_view text) {
  const std::u16string whole = ToUtf16(text);
  std::u16string rest;
  std::size_t copied = 0;
  for (const auto& [start, end] : CodesOf(whole)) {
    rest.append(whole, copied, start - copied);
    copied = end;
  }
  return FromUtf16(rest.append(whole, copied));
}

// The wait cursor, while it lives.
class Waiting {
 public:
  explicit Waiting(const std::function<void(bool)>& show) : show_(show) { Show(true); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting() { Show(false); }
  void Show(bool waiting) const {
    if (show_) show_(waiting);
  }

 private:
  const std::function<void(bool)>& show_;
};

}  // namespace

std::vector<std::string> SpellChecker::WordList(std::string_view text) {
  std::vector<std::string> words =
      Split(WithoutCodes(tenora::ReplaceAll(std::string(text), "\r\n", " ")), " ");
  for (std::string& word : words) {
    std::erase_if(word, [](char c) { return kPunctuation.find(c) != std::string_view::npos; });
  }
  return words;
}

void SpellChecker::SpellCheck(RichTextBox& editor) {
  try {
    bool complete = false;
    {
      const Waiting waiting(ShowWaitCursor);
      const std::unique_ptr<spelling::Speller> speller = open_speller_();
      complete = CheckWords(editor, *speller);
    }
    if (complete) dialogs_.Say("Spell check complete");
  } catch (...) {
    // The misspelling is part of the text.
    dialogs_.Say("The following error occured during the document's spelling\r\n" +
                 std::string(CurrentError().description()));
  }
}

// False when the user stopped it.
bool SpellChecker::CheckWords(RichTextBox& editor, spelling::Speller& speller) {
  for (const std::string& word : WordList(editor.Text())) {
    if (word.empty()) continue;
    const std::vector<std::string> errors = spelling::MisspeltWords(speller, word);
    if (errors.empty() || !AskForWord) continue;
    if (ShowWaitCursor) ShowWaitCursor(false);
    const Choice choice = AskForWord(errors.front(), speller);
    if (ShowWaitCursor) ShowWaitCursor(true);
    if (choice.stop) return false;
    if (!choice.replacement.empty()) ReplaceAll(editor, errors.front(), choice.replacement);
  }
  return true;
}

void SpellChecker::ReplaceAll(RichTextBox& editor, std::string_view word,
                              std::string_view replacement) {
  // Positions count a line end once.
  const std::u16string text = ToUtf16(tenora::ReplaceAll(editor.Text(), "\r\n", "\n"));
  std::vector<std::pair<int, int>> codes;
  for (const auto& [start, end] : CodesOf(text)) {
    codes.emplace_back(static_cast<int>(start), static_cast<int>(end));
  }
  editor.ReplaceEvery(word, replacement, RichTextBox::kNoHighlight, codes);
}

}  // namespace tenora
