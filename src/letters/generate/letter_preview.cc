#include "letters/letter_preview.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "letters/generate/letter_maker.h"
#include "letters/generation_request.h"
#include "platform/dialogs/silent_dialogs.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"
#include "rental/detached_session.h"

namespace tenora {
namespace {

// The parts of a question around the codes in it, which every letter fills otherwise.
std::vector<std::string_view> FixedParts(std::string_view question) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t code = question.find(kCodeStart);
    parts.push_back(question.substr(0, code));
    if (code == std::string_view::npos) return parts;
    const std::size_t end = question.find(kCodeEnd, code);
    if (end == std::string_view::npos) return parts;
    question.remove_prefix(end + kCodeEnd.size());
  }
}

// Whether a letter asks this question of its template, its codes filled in.
bool Asks(std::string_view asked, std::string_view question) {
  const std::vector<std::string_view> parts = FixedParts(question);
  if (parts.size() == 1) return asked == question;
  if (!asked.starts_with(parts.front())) return false;
  asked.remove_prefix(parts.front().size());
  for (std::size_t i = 1; i + 1 < parts.size(); ++i) {
    const std::size_t found = asked.find(parts[i]);
    if (found == std::string_view::npos) return false;
    asked.remove_prefix(found + parts[i].size());
  }
  return asked.ends_with(parts.back());
}

// Questions are answered from the given answers.
class PreviewDialogs : public SilentDialogs {
 public:
  LetterAnswer AskForLetter(const LetterQuestion& question) override {
    // Without the line that names the recipient.
    const std::string_view message =
        std::string_view(question.prompt).substr(0, question.prompt.rfind("\r\n"));
    const auto given = std::ranges::find_if(
        answers_, [&](const auto& answer) { return Asks(message, answer.first); });
    if (given == answers_.end()) return {.way = LetterAnswer::Way::kLater};
    return {.way = LetterAnswer::Way::kText, .text = given->second};
  }

  void Begin(const PromptAnswers& answers) {
    answers_ = answers;
    TakeMessages();
  }

 private:
  PromptAnswers answers_;
};

GenerationRequest RequestFor(const std::string& template_kind, const std::string& template_name) {
  GenerationRequest request;
  request.template_kind = template_kind;
  request.template_name = template_name;
  return request;
}

constexpr const char* kUnread = "The rental database could not be read";

// Puts the right words for the questions that stay, which the letter check finds as codes.
std::vector<LetterFinding> WithUnanswered(std::vector<LetterFinding> findings,
                                          const std::vector<std::string>& unanswered) {
  for (const std::string& question : unanswered) {
    std::erase_if(findings, [&](const LetterFinding& finding) { return finding.code == question; });
    findings.push_back({FindingWeight::kWarning, question,
                        "this question has no answer yet, and its code stands in the preview",
                        std::string(kPromptStart).append(question).append(kPromptEnd)});
  }
  return findings;
}

}  // namespace

// A session of its own over the tables of the one that is kept beside the windows.
class LetterPreview::Machine {
 public:
  Machine(std::shared_ptr<DetachedSession> detached, GenerationRequest letters)
      : beside(std::move(detached)),
        session(beside->PlatformWith(dialogs), DatabaseUse::kLook),
        one_file(session.database, beside->file()),
        request(std::move(letters)),
        maker(session, request, LetterMaker::BadFutureDate::kLeftInLetter) {}

  const std::shared_ptr<DetachedSession> beside;
  PreviewDialogs dialogs;
  Session session;
  const Database::OneFile one_file;
  GenerationRequest request;
  LetterMaker maker;
};

LetterPreview::LetterPreview(Session& session, const std::string& template_kind,
                             const std::string& template_name)
    : machine_(
          std::make_unique<Machine>(session.Beside(), RequestFor(template_kind, template_name))) {}

LetterPreview::~LetterPreview() = default;

std::string LetterPreview::Load() {
  const auto taken = machine_->beside->Take();
  const std::string problem = machine_->beside->Refresh();
  if (!problem.empty()) return std::string(kUnread) + ": " + problem;
  machine_->session.caches = machine_->beside->session().caches;
  return {};
}

std::vector<RecipientRow> LetterPreview::Recipients(const RecipientFilter& filter) const {
  return ListRecipients(machine_->session.caches, machine_->request.template_kind, filter);
}

void LetterPreview::SetTemplate(const RichTextBox& text) {
  template_source_ = text.TextRTF();
  template_used_ = false;
  questions_ = PromptMessages(text);
}

PreviewedLetter LetterPreview::Show(const Recipient& recipient) {
  try {
    return Make(recipient);
  } catch (const DatabaseProblem&) {
    return {
        template_source_, std::string(kUnread) + ": " + machine_->dialogs.TakeFirstInOneLine(), {}};
  } catch (...) {
    const RuntimeError error = CurrentError();
    return {template_source_, std::string(error.description()), {}};
  }
}

PreviewedLetter LetterPreview::Make(const Recipient& recipient) {
  const auto taken = machine_->beside->Take();
  machine_->dialogs.Begin(answers_);
  if (!template_used_) machine_->maker.UseTemplate(template_source_);
  template_used_ = true;
  PromptOutcome prompts;
  const frmLetter& letter = machine_->maker.Make(recipient, answers_, {}, &prompts);
  return {letter.rtfLetter.TextRTF(), {}, WithUnanswered(letter.Check(), prompts.left)};
}

}  // namespace tenora
