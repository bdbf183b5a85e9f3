// Makes one letter of a batch: the template, which is read once, merged for one recipient.
#pragma once

#include <optional>
#include <string>

#include "letters/frm_letter.h"
#include "letters/generation_request.h"
#include "letters/template_library.h"
#include "platform/runtime/error.h"

namespace tenora {

// A problem that concerns one letter only, described for people.
class LetterProblem : public RuntimeError {
 public:
  explicit LetterProblem(const std::string& why)
      : RuntimeError(error_number::kInvalidProcedureCall, why) {}
};

// The recipient is not, or no longer, in the database.
class RecipientGone : public LetterProblem {
 public:
  using LetterProblem::LetterProblem;
};

// The database could not be read for this letter, which has been shown.
class DatabaseProblem : public LetterProblem {
 public:
  DatabaseProblem() : LetterProblem("the rental database could not be read") {}
};

class LetterMaker {
 public:
  // What happens to a future-date code that cannot be read, which the merge has shown.
  enum class BadFutureDate { kLeftInLetter, kRaised };

  LetterMaker(Session& session, const GenerationRequest& request, BadFutureDate bad_future_date);

  // Raises the errors of PathOf and LoadLetter; later calls do nothing.
  void ReadTemplate();
  // From now on letters are made of this text, as the template's window has it. Raises what
  // ReadTemplate raises for a form that is not sound; there is no template then.
  void UseTemplate(const std::string& source);
  // The text that letters are made of. Raises what ReadTemplate raises.
  const std::string& TemplateSource();
  BadFutureDate bad_future_date() const { return bad_future_date_; }

  // A letter for this recipient, merged, its prompts asked unless `answers` has theirs. Raises
  // RecipientGone for nobody of that name or code, DatabaseProblem for a failed look-up,
  // LetterProblem for a building receipt number that could not be issued; and the errors of the
  // merge.
  frmLetter& Make(const Recipient& recipient, const PromptAnswers& answers,
                  const std::string& progress, PromptOutcome* prompts);
  // A letter that another maker has merged from the same template, as Make would give it.
  frmLetter& Put(LetterMembers members, std::string source);
  // The letter that an earlier run saved for this recipient. Raises what LoadLetter raises.
  frmLetter& Load(const Recipient& recipient, const std::filesystem::path& file);

 private:
  bool ForTenants() const { return request_.template_kind == kTemplates; }
  // From the letter's editor.
  void TakeTemplate();
  void Begin(const Recipient& recipient);
  void MergeTenant();
  void MergeOwner();
  void RequireDatabaseRead() const;
  void RequireFutureDates(bool inserted) const;

  Session& session_;
  const GenerationRequest& request_;
  const BadFutureDate bad_future_date_;
  std::filesystem::path template_path_;
  std::optional<std::string> template_source_;
  frmLetter letter_;
  std::size_t errors_before_ = 0;  // of the database, before the current letter
};

}  // namespace tenora
