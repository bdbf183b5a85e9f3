#include "startup/cheque_print.h"

#include <unicode/uchar.h>

#include <string>
#include <string_view>

#include "data/sql_text.h"
#include "letters/frm_letter.h"
#include "letters/template_library.h"
#include "merge/amount_in_words.h"
#include "merge/replace_code.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"
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

// Letters and currency signs, as in "12.50 NZD" and "12.5abc": the management package may write the
// currency after the amount. A digit, separator, sign or number word such as U+4E07 (ten thousand)
// belongs to the amount.
bool IsCurrencyWord(std::string_view text) {
  while (!text.empty()) {
    const auto c = static_cast<UChar32>(TakeCodePoint(text));
    if (u_charType(c) == U_CURRENCY_SYMBOL) continue;
    if (!u_isUAlphabetic(c) || u_getNumericValue(c) != U_NO_NUMERIC_VALUE) return false;
  }
  return true;
}

// Why an amount above zero cannot be made out as it was written; empty when it can.
std::string ValueProblem(const Locale& locale, const std::string& value) {
  const NumberAndRest read = SplitLeadingNumber(value);
  if (!IsCurrencyWord(read.rest)) {
    return "The value \"" + value + "\" cannot be read to its end, only as " +
           NumberText(read.number) +
           ". Write it as digits with a decimal point and nothing between them, such as 1234.50.";
  }
  const bool no_cents = FormatNumber(read.number, "0.00") == "0.00";
  if (no_cents || MoneyText(locale, read.number) == MoneyText(locale, 0)) {
    return "The value \"" + value + "\" rounds to " + MoneyText(locale, 0) + ".";
  }
  return {};
}

// Whether the cheque would say one amount in words and mean another.
bool WordsDiffer(const frmLetter& cheque, double amount) {
  const auto shows = [&](std::string_view code) {
    return SourceContains(cheque.rtfLetter, TagInSource(cheque.rtfLetter, code));
  };
  return !WordsSay(amount) && (shows("Value in words 1") || shows("Value in words 2"));
}

void SayNothingPrinted(Dialogs& dialogs, const std::string& why) {
  dialogs.Say(why + " Nothing was printed.", kLabel);
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
  if (WordsDiffer(letter, parameters.Amount())) {
    SayNothingPrinted(dialogs, "The words of a cheque go up to 999999.99: for the value \"" +
                                   parameters.value + "\" words and figures would differ.");
    return false;
  }
  const auto error = letter.InsertChequeDetails(parameters.payee, parameters.Amount());
  if (error) ShowError(dialogs, kLabel, *error);
  return !error;
}

bool PrintCheque(const CommandParts& parts) {
  Session& session = parts.session;
  Dialogs& dialogs = session.platform.dialogs;
  const ChequeParameters parameters = ReadParameters(parts.command_line);
  if (!parameters.Valid()) {
    dialogs.Say("Invalid command string for ReceiptCheque");
    return false;
  }
  const std::string problem = ValueProblem(session.platform.locale, parameters.value);
  if (!problem.empty()) {
    SayNothingPrinted(dialogs, problem);
    return false;
  }
  const bool dollars_kept = KeepWord(session.settings, "Dollar", parameters.dollars);
  const bool cents_kept = KeepWord(session.settings, "Cents", parameters.cents);
  if (!dollars_kept || !cents_kept) {
    SayNothingPrinted(dialogs, "The words for the currency cannot be stored.");
    return false;
  }
  session.database.SetCommandMode();
  const ScratchSweep sweep = session.SweepScratchFiles();
  frmLetter cheque(session);
  if (!BuildCheque(session, parameters, cheque)) return false;
  if (!MayLeave(parts, cheque, {.name = parameters.payee, .code = {}}, "cheque", kLabel))
    return false;
  return PrintOneLetter(parts, cheque, true, kLabel);
}

}  // namespace

bool ReceiptCheque(const CommandParts& parts) {
  bool printed = false;
  Guarded(parts.session.platform.dialogs, kLabel, [&] { printed = PrintCheque(parts); });
  return printed;
}

}  // namespace tenora
