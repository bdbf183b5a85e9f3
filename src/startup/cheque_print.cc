#include "startup/cheque_print.h"

#include <string>

#include "letters/frm_letter.h"
#include "letters/template_library.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"
#include "startup/print_one_letter.h"

namespace tenora {
namespace {

constexpr const char* kLabel = "General - ReceiptCheque";

struct ChequeParameters {
  std::string payee;
  std::string value;
  std::string format;
  std::string dollars;
  std::string cents;

  // "12.5abc" is 12.5: the management package may write the currency after the amount.
  double Amount() const { return LeadingNumber(value); }
  bool Valid() const { return !payee.empty() && Amount() > 0 && !format.empty(); }
};

ChequeParameters ReadParameters(const CommandLine& line) {
  ChequeParameters read;
  read.payee = line.GetCommandParameter("PAYEE", "");
  read.value = line.GetCommandParameter("VALUE", "");
  read.format = line.GetCommandParameter("FORMAT", "");
  read.dollars = line.GetCommandParameter("DOLLARS", "");
  read.cents = line.GetCommandParameter("CENTS", "");
  return read;
}

// Keeps a word of the currency for this cheque and all later ones. False when it does not read
// back: the cheque would then be made out in another currency.
bool KeepWord(Settings& settings, const char* key, const std::string& word) {
  if (word.empty()) return true;
  settings.SaveSettingText("Cheque", key, word);
  return settings.GetSettingText("Cheque", key, "") == word;
}

bool BuildCheque(Session& session, const ChequeParameters& parameters, frmLetter& letter) {
  Dialogs& dialogs = session.platform.dialogs;
  letter.members().LetterTitle = parameters.format;
  letter.members().RecipientName = parameters.payee;
  const bool loaded = Guarded(dialogs, "frmLetter - LoadLetter", [&] {
    const TemplateLibrary library(session.database.DataFolder());
    letter.LoadLetter(library.PathOf(session.cheque_word, parameters.format), session.cheque_word);
  });
  if (!loaded) return false;
  const auto error = letter.InsertChequeDetails(parameters.payee, parameters.Amount());
  if (error) ShowError(dialogs, kLabel, *error);
  return !error;
}

bool PrintCheque(const CommandParts& parts) {
  Session& session = parts.session;
  const ChequeParameters parameters = ReadParameters(parts.command_line);
  if (!parameters.Valid()) {
    session.platform.dialogs.Say("Invalid command string for ReceiptCheque");
    return false;
  }
  const bool dollars_kept = KeepWord(session.settings, "Dollar", parameters.dollars);
  const bool cents_kept = KeepWord(session.settings, "Cents", parameters.cents);
  if (!dollars_kept || !cents_kept) {
    session.platform.dialogs.Say(
        "The words for the currency cannot be stored. Nothing was printed.", kLabel);
    return false;
  }
  session.database.SetCommandMode();
  frmLetter cheque(session);
  if (!BuildCheque(session, parameters, cheque)) return false;
  return PrintOneLetter(parts, cheque, true, kLabel);
}

}  // namespace

bool ReceiptCheque(const CommandParts& parts) {
  bool printed = false;
  Guarded(parts.session.platform.dialogs, kLabel, [&] { printed = PrintCheque(parts); });
  return printed;
}

}  // namespace tenora
