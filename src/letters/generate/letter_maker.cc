#include "letters/generate/letter_maker.h"

#include <utility>

#include "letters/template_lint.h"
#include "merge/building_receipt_number.h"
#include "platform/runtime/clock.h"

namespace tenora {
LetterMaker::LetterMaker(Session& session, const GenerationRequest& request,
                         BadFutureDate bad_future_date)
    : session_(session), request_(request), bad_future_date_(bad_future_date), letter_(session) {}

void LetterMaker::ReadTemplate() {
  if (template_source_) return;
  const TemplateLibrary library(session_.database.TemplateFolder());
  template_path_ = library.PathOf(request_.template_kind, request_.template_name);
  letter_.LoadLetter(template_path_, request_.template_kind);
  TakeTemplate();
}

void LetterMaker::UseTemplate(const std::string& source) {
  letter_.rtfLetter.SetTextRTF(source);
  TakeTemplate();
}

const std::string& LetterMaker::TemplateSource() {
  ReadTemplate();
  return *template_source_;
}

void LetterMaker::TakeTemplate() {
  template_source_.reset();
  RequireSoundForms(letter_.rtfLetter, ForTenants() ? TemplateKind::kTenant : TemplateKind::kOwner,
                    session_.platform.clock.Today());
  if (ForTenants()) RequireReceiptNumbers(session_, letter_.rtfLetter);
  template_source_ = letter_.rtfLetter.TextRTF();
}

// A letter window of its own for each recipient would start with the same members.
void LetterMaker::Begin(const Recipient& recipient) {
  LetterMembers& members = letter_.members();
  members = LetterMembers();
  members.Kind = ForTenants() ? kTenantLetter : kOwnerLetter;
  members.LetterTitle = request_.template_name;
  members.RecipientName = recipient.name;
  members.TenantCode = recipient.code;
  if (ForTenants() && members.TenantCode.empty()) {
    members.TenantCode = session_.caches.ReferenceByKeyName(recipient.name);
  }
}

frmLetter& LetterMaker::Make(const Recipient& recipient, const PromptAnswers& answers,
                             const std::string& progress, PromptOutcome* prompts) {
  ReadTemplate();
  Begin(recipient);
  letter_.members().FilePath = template_path_.string();
  letter_.rtfLetter.SetTextRTF(*template_source_);
  letter_.AfterLoadLetter();
  errors_before_ = session_.database.ErrorsReported();
  if (ForTenants()) {
    MergeTenant();
  } else {
    MergeOwner();
  }
  *prompts = letter_.InsertPrompts(answers, progress);
  return letter_;
}

frmLetter& LetterMaker::Put(LetterMembers members, std::string source) {
  letter_.rtfLetter.SetTextRTF(std::move(source));
  letter_.members() = std::move(members);
  letter_.members().FilePath = template_path_.string();
  return letter_;
}

frmLetter& LetterMaker::Load(const Recipient& recipient, const std::filesystem::path& file) {
  Begin(recipient);
  letter_.LoadLetter(file, letter_.members().Kind);
  return letter_;
}

void LetterMaker::MergeTenant() {
  const TenantMergeOutcome outcome = letter_.InsertTenantDetails();
  RequireDatabaseRead();
  if (outcome.error) throw *outcome.error;
  if (!outcome.tenant_found) {
    throw RecipientGone("the rental database has no such tenancy");
  }
  if (!outcome.receipt_number_issued) {
    throw LetterProblem("no building receipt number could be issued");
  }
  RequireFutureDates(outcome.future_dates_inserted);
}

void LetterMaker::MergeOwner() {
  const OwnerMergeOutcome outcome = letter_.InsertOwnerDetails();
  RequireDatabaseRead();
  if (outcome.error) throw *outcome.error;
  if (!outcome.owner_found) {
    throw RecipientGone(letter_.members().RecipientName.empty()
                            ? "the owner has no name in the rental database"
                            : "the rental database has no owner of this name");
  }
  RequireFutureDates(outcome.future_dates_inserted);
}

// Before anything else is made of the outcome: what could not be read looks like what is not there.
void LetterMaker::RequireDatabaseRead() const {
  if (session_.database.ErrorsReported() != errors_before_) throw DatabaseProblem();
}

void LetterMaker::RequireFutureDates(bool inserted) const {
  if (!inserted && bad_future_date_ == BadFutureDate::kRaised) {
    throw LetterProblem("the template holds a future date that cannot be read");
  }
}

}  // namespace tenora
