#include "letters/letter_maker.h"

#include <algorithm>

#include "letters/template_library.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

RuntimeError CannotFill(const std::string& why) {
  return StandardError(error_number::kInvalidProcedureCall, why);
}

}  // namespace

LetterMaker::LetterMaker(Session& session, const GenerationRequest& request,
                         BadFutureDate bad_future_date)
    : session_(session), request_(request), bad_future_date_(bad_future_date), letter_(session) {}

void LetterMaker::ReadTemplate() {
  if (template_source_) return;
  const TemplateLibrary library(session_.database.DataFolder());
  template_path_ = library.PathOf(request_.template_kind, request_.template_name);
  letter_.LoadLetter(template_path_, request_.template_kind);
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

frmLetter& LetterMaker::Make(const Recipient& recipient, std::vector<std::string>* warnings,
                             std::size_t* unanswered) {
  ReadTemplate();
  Begin(recipient);
  letter_.members().FilePath = template_path_.string();
  letter_.rtfLetter.SetTextRTF(*template_source_);
  letter_.AfterLoadLetter();
  if (ForTenants()) {
    MergeTenant(warnings);
  } else {
    MergeOwner();
  }
  *unanswered = letter_.InsertPrompts(request_.answers);
  return letter_;
}

frmLetter& LetterMaker::Load(const Recipient& recipient, const std::filesystem::path& file) {
  Begin(recipient);
  letter_.LoadLetter(file, letter_.members().Kind);
  return letter_;
}

void LetterMaker::MergeTenant(std::vector<std::string>* warnings) {
  const LetterMembers& members = letter_.members();
  const std::size_t errors_before = session_.database.ErrorsReported();
  const TenantMergeOutcome outcome = letter_.InsertTenantDetails();
  if (session_.database.ErrorsReported() != errors_before) {
    throw CannotFill("the rental database could not be read for " + members.RecipientName);
  }
  if (outcome.error) throw *outcome.error;
  if (!outcome.tenant_found) {
    throw CannotFill("the rental database has no tenancy of " + members.RecipientName +
                     (members.TenantCode.empty() ? "" : " (" + members.TenantCode + ")"));
  }
  if (!outcome.receipt_number_issued) {
    throw CannotFill("no building receipt number could be issued");
  }
  if (outcome.future_dates_inserted) return;
  const std::string problem = "a future date in the template cannot be read";
  if (bad_future_date_ == BadFutureDate::kRaised) throw CannotFill(problem);
  warnings->push_back(problem);
}

void LetterMaker::MergeOwner() {
  const std::string& name = letter_.members().RecipientName;
  const bool known = std::ranges::any_of(
      session_.caches.Owners, [&](const OwnerRecord& owner) { return owner.Name == name; });
  if (!known) throw CannotFill("the rental database has no owner called " + name);
  throw CannotFill("owner letters cannot be merged yet");
}

}  // namespace tenora
