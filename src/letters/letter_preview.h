// A look at the letters of a template before a run makes them: each is merged and checked as the
// run would merge and check it, and nothing else happens. Nothing is saved, printed, logged or
// changed in the rental database, and no receipt number is taken.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "letters/letter_check.h"
#include "letters/recipients.h"
#include "merge/prompts.h"
#include "platform/richtext/rich_text_box.h"
#include "rental/session.h"

namespace tenora {

struct PreviewedLetter {
  std::string source;  // RTF; where there is a problem, the template's
  // Why there is no letter; empty where there is one.
  std::string problem;
  // Those of the letter check, and a warning for each question without an answer.
  std::vector<LetterFinding> findings;
};

class LetterPreview {
 public:
  // For "Templates" or "Owner Templates", on the thread of `session`, whose platform outlives this
  // object; its dialogs are not used: no box is shown, whatever happens. Raises what
  // Session::Beside raises.
  LetterPreview(Session& session, const std::string& template_kind,
                const std::string& template_name);
  ~LetterPreview();

  // Takes tenants and owners of the database as it is now; before the first call there is nobody.
  // Reads only what the session beside the windows, refreshed on another thread, has not read yet.
  // Returns what is wrong with the database, in one line; empty where it could be read.
  std::string Load();
  std::vector<RecipientRow> Recipients(const RecipientFilter& filter) const;

  // The text that is previewed from now on, saved or not.
  void SetTemplate(const RichTextBox& text);
  // What the template asks, each once, and the answers given so far, which outlive the template's
  // changes. A question that holds a code is listed with it; its answer holds for everyone.
  const std::vector<std::string>& Questions() const { return questions_; }
  const PromptAnswers& Answers() const { return answers_; }
  // A question that has none here stays in the letters as its code.
  void SetAnswers(PromptAnswers answers) { answers_ = std::move(answers); }

  // Raises nothing.
  PreviewedLetter Show(const Recipient& recipient);

 private:
  class Machine;

  PreviewedLetter Make(const Recipient& recipient);

  std::unique_ptr<Machine> machine_;
  std::string template_source_;
  bool template_used_ = false;  // false: the machine has an older one
  std::vector<std::string> questions_;
  PromptAnswers answers_;
};

}  // namespace tenora
