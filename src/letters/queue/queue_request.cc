#include <string>
#include <utility>
#include <vector>

#include "letters/generate/letter_maker.h"
#include "letters/letter_names.h"
#include "letters/letter_queue.h"
#include "merge/merge_codes.h"
#include "merge/prompts.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

[[noreturn]] void Refuse(const std::string& why) {
  throw StandardError(error_number::kInvalidProcedureCall, why);
}

// Refuses what is another question for each letter.
std::vector<std::string> QuestionsOf(const std::string& source) {
  RichTextBox box;
  box.SetTextRTF(source);
  std::vector<std::string> prompts = PromptMessages(box);
  for (const std::string& prompt : prompts) {
    if (prompt.find(kCodeStart) == std::string::npos) continue;
    Refuse("the template asks \"" + prompt +
           "\", which is another question for each letter: workers cannot ask it");
  }
  return prompts;
}

// Nobody is there to answer a worker.
void RequireAnswers(const std::string& source, const PromptAnswers& answers) {
  std::string unanswered;
  for (const std::string& prompt : QuestionsOf(source)) {
    if (answers.contains(prompt)) continue;
    unanswered += (unanswered.empty() ? "\"" : ", \"") + prompt + "\"";
  }
  if (!unanswered.empty()) {
    Refuse("the template asks " + unanswered + ": workers cannot ask; answer it beforehand");
  }
}

}  // namespace

std::vector<std::string> QuestionsBeforeQueue(Session& session, const GenerationRequest& request) {
  return QuestionsOf(
      LetterMaker(session, request, LetterMaker::BadFutureDate::kRaised).TemplateSource());
}

QueueRequest PrepareForQueue(Session& session, GenerationRequest request,
                             const ChooseRecipients& choose) {
  if (!session.ReloadRentalData()) {
    throw RuntimeError(error_number::kObjectNotSet,
                       "The rental database could not be read; nothing was done.");
  }
  request.recipients = choose(session.caches);
  if (request.recipients.empty()) Refuse("Nothing selected");
  if (request.template_kind == kOwnerTemplates) {
    FillOwnerCodes(session.caches, request.recipients);
  }
  if (!request.name_pattern) {
    request.name_pattern = StoredNamePattern(session.settings, request.template_kind);
  }
  RequireSoundPattern(*request.name_pattern, request.template_kind);
  if (request.destination == Destination::kEmail && !session.options.SmtpSend) {
    Refuse("the office's e-mails are sent by a mail program, which workers do not have");
  }
  LetterMaker maker(session, request, LetterMaker::BadFutureDate::kRaised);
  std::string source = maker.TemplateSource();
  RequireAnswers(source, request.answers);
  return {std::move(request), std::move(source)};
}

}  // namespace tenora
