#include "startup/receipt_print.h"

#include <algorithm>
#include <string>
#include <vector>

#include "data/database.h"
#include "letters/frm_letter.h"
#include "letters/template_library.h"
#include "letters/template_lint.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"
#include "rental/tenant_lookups.h"
#include "startup/print_one_letter.h"

namespace tenora {
namespace {

constexpr const char* kLabel = "General - ReceiptPrint";

struct ReceiptParameters {
  std::string tenant_code;
  std::string format;
  bool use_default_printer = true;
  bool to_printer = true;
  bool to_email = false;
  std::int32_t reprint = 0;  // record number of an earlier payment; 0: the latest payment

  bool Valid() const { return (!tenant_code.empty() || reprint != 0) && !format.empty(); }
};

template <typename Convert>
auto ReadAs(Convert convert, const CommandLine& line, const char* name, const char* absent) {
  const std::string value = line.GetCommandParameter(name, absent);
  return About([&] { return std::string(name) + "=\"" + value + "\""; },
               [&] { return convert(value); });
}

// Whether a receipt template shows the payment itself, not only what it did to the account.
bool ShowsPayment(const RichTextBox& letter) {
  return std::ranges::any_of(MergeCodesOf(TemplateKind::kTenant), [&](const MergeCode& code) {
    return code.source == CodeSource::kLastPayment &&
           SourceContains(letter, TagInSource(letter, code.name));
  });
}

// Raises 13 (Type mismatch) or 6 (Overflow) for a value that is not a boolean or number.
ReceiptParameters ReadParameters(const CommandLine& line) {
  ReceiptParameters read;
  read.tenant_code = TrimBlanks(line.GetCommandParameter("PRINTRECEIPT", ""));
  read.format = line.GetCommandParameter("FORMAT", "");
  read.use_default_printer = ReadAs(ToBool, line, "DEFAULT", "True");
  read.to_printer = ReadAs(ToBool, line, "TOPRINTER", "True");
  read.to_email = ReadAs(ToBool, line, "TOEMAIL", "FALSE");
  read.reprint = ReadAs(ToInt32, line, "REPRINT", "0");
  return read;
}

class ReceiptCommand {
 public:
  explicit ReceiptCommand(const CommandParts& parts)
      : parts_(parts),
        session_(parts.session),
        dialogs_(parts.session.platform.dialogs),
        letter_(parts.session),
        errors_before_(parts.session.database.ErrorsReported()) {}

  bool Run();

 private:
  bool LoadRentalData();
  bool FindPayment();
  // A failed query has been shown and reads as empty fields: such a letter is not a receipt.
  bool DatabaseFailed() const { return session_.database.ErrorsReported() != errors_before_; }
  bool BuildLetter();
  bool LacksPayment();
  bool MergeLetter();
  void TellOfLocalCopy();
  bool Print();
  bool Email();
  bool SaveCopy();

  const CommandParts& parts_;
  Session& session_;
  Dialogs& dialogs_;
  frmLetter letter_;
  ReceiptParameters parameters_;
  std::size_t errors_before_;
  bool future_dates_inserted_ = true;
};

bool ReceiptCommand::Run() {
  parameters_ = ReadParameters(parts_.command_line);
  if (!parameters_.Valid()) {
    dialogs_.Say("Invalid command string for ReceiptPrint");
    return false;
  }
  session_.database.SetCommandMode();
  if (!LoadRentalData() || DatabaseFailed()) return false;
  const ScratchSweep sweep = session_.SweepScratchFiles();
  if (!BuildLetter()) return false;
  letter_.InsertPrompts();
  TellOfLocalCopy();
  const Recipient recipient{letter_.members().RecipientName, parameters_.tenant_code};
  if (!MayLeave(parts_, letter_, recipient, "receipt", kLabel)) return false;

  bool done = future_dates_inserted_;
  if (parameters_.to_printer) done = Print() && done;
  if (parameters_.to_email) done = Email() && done;
  return SaveCopy() && done;
}

bool ReceiptCommand::LoadRentalData() {
  Database& database = session_.database;
  const OpenedDatabase opened(database);
  // The failure has been shown; every load below would fail too.
  if (!database.IsOpen()) return false;
  if (parameters_.reprint != 0 && !FindPayment()) return false;
  // Without a code the tenancy is found by its name, among all.
  if (parameters_.tenant_code.empty()) {
    session_.caches.Load(database);
  } else {
    session_.caches.CacheTenancy(database, parameters_.tenant_code);
  }
  session_.options.LoadOptions();
  return true;
}

// The tenancy of a reprinted receipt is its payment's. Without the payment nothing is printed, even
// when a tenancy code was given: its payment fields would be empty.
bool ReceiptCommand::FindPayment() {
  Database& database = session_.database;
  const std::string number = std::to_string(parameters_.reprint);
  const std::string payment = "where recordnumber=" + number;
  parameters_.tenant_code =
      database.LookupText("tenant_code", "revenues", payment, parameters_.tenant_code);
  if (!database.LookupText("recordnumber", "revenues", payment, "").empty()) return true;
  if (!DatabaseFailed()) {
    dialogs_.Say("There is no payment with the number " + number + ". Nothing was printed.",
                 kLabel);
  }
  return false;
}

bool ReceiptCommand::BuildLetter() {
  LetterMembers& members = letter_.members();
  members.TenantCode = parameters_.tenant_code;
  members.ReceiptNumber = parameters_.reprint;
  members.LetterTitle = parameters_.format;
  members.RecipientName = session_.caches.KeyNameByReference(parameters_.tenant_code);
  const bool loaded = Guarded(dialogs_, "frmLetter - LoadLetter", [&] {
    const TemplateLibrary library(session_.database.DataFolder());
    letter_.LoadLetter(library.PathOf(kTemplates, parameters_.format), kTemplates);
    RequireSoundForms(letter_.rtfLetter, TemplateKind::kTenant, session_.platform.clock.Today());
  });
  if (!loaded || LacksPayment()) return false;
  return MergeLetter();
}

// A tenancy that never paid: the payment's fields would be empty. Found before the merge, which
// may issue the building's next number. A reprint's payment has been found.
bool ReceiptCommand::LacksPayment() {
  if (parameters_.reprint != 0 || !ShowsPayment(letter_.rtfLetter)) return false;
  const TenantRecord* const tenant = session_.caches.FindTenant(parameters_.tenant_code);
  if (tenant == nullptr) return false;  // the merge reports it
  const OpenedDatabase opened(session_.database);
  const bool has_payment = HasPayment(session_, *tenant);
  if (DatabaseFailed()) return true;
  if (!has_payment) {
    dialogs_.Say("The tenancy '" + parameters_.tenant_code + "' (" + tenant->KeyName +
                     ") has no payment to make out a receipt for. Nothing was printed.",
                 kLabel);
  }
  return !has_payment;
}

bool ReceiptCommand::MergeLetter() {
  const TenantMergeOutcome outcome = letter_.InsertTenantDetails();
  if (DatabaseFailed()) return false;
  if (outcome.error) {
    ShowError(dialogs_, kLabel,
              WithDetail(*outcome.error, "tenancy " + letter_.members().TenantCode));
    return false;
  }
  if (!outcome.tenant_found) {
    const std::string asked =
        parameters_.reprint == 0 ? "" : " (payment " + std::to_string(parameters_.reprint) + ")";
    dialogs_.Say("There is no tenancy with the code '" + parameters_.tenant_code + "'" + asked +
                     ". Nothing was printed.",
                 kLabel);
    return false;
  }
  // Such a letter, with the code left in it, leaves only on a person's word.
  future_dates_inserted_ = outcome.future_dates_inserted;
  return outcome.receipt_number_issued;
}

// The payments of a copy may be old ones: the box at the failing open names the files only.
void ReceiptCommand::TellOfLocalCopy() {
  const auto& server = session_.database.UnreachableServer();
  if (!server) return;
  dialogs_.Say("This receipt is made from the copy of the database on this computer, because " +
                   server->string() +
                   " could not be reached. Check its payment before you hand it over.",
               kLabel);
}

bool ReceiptCommand::Print() {
  return PrintOneLetter(parts_, letter_, !parameters_.use_default_printer, kLabel);
}

bool ReceiptCommand::Email() {
  letter_.members().Kind = kTenantLetter;
  const bool attach_pdf =
      session_.settings.GetSettingAs(ToInt32, "Receipt", "PdfAttachment", "0") != 0;
  clsEmailSender sender(session_);
  return letter_.SendEmail(sender, letter_.members().LetterTitle, attach_pdf);
}

// Reprints are never saved again.
bool ReceiptCommand::SaveCopy() {
  if (parameters_.reprint != 0) return true;
  if (session_.settings.GetSettingAs(ToInt32, "Receipt", "SaveCopy", "0") == 0) return true;
  return letter_.SaveTenantTemplate();
}

}  // namespace

bool ReceiptPrint(const CommandParts& parts) {
  bool done = false;
  Guarded(parts.session.platform.dialogs, kLabel, [&] { done = ReceiptCommand(parts).Run(); });
  return done;
}

}  // namespace tenora
