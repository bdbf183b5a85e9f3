#include "letters/window_print.h"

#include <algorithm>
#include <string>

#include "letters/template_library.h"
#include "merge/merge_codes.h"
#include "merge/template_forms.h"
#include "platform/dialogs/guard.h"

namespace tenora {
namespace {

// The alignment sample's payee is spelt so.
constexpr const char* kSamplePayee = "This is the payyes name";
constexpr double kSampleAmount = 1234.56;

bool HoldsCodeOf(TemplateKind kind, const frmLetter& letter) {
  const std::string text = letter.rtfLetter.Text();
  return std::ranges::any_of(
             MergeCodesOf(kind),
             [&](const MergeCode& code) {
               return text.find(std::string(kCodeStart).append(code.name).append(kCodeEnd)) !=
                      std::string::npos;
             }) ||
         TemplateForms::MayHold(letter.rtfLetter.TextRTF(), kind);
}

bool IsUnfilledTemplate(const frmLetter& letter) {
  const std::string& kind = letter.members().Kind;
  if (kind == kTemplates) return HoldsCodeOf(TemplateKind::kTenant, letter);
  if (kind == kOwnerTemplates) return HoldsCodeOf(TemplateKind::kOwner, letter);
  return false;
}

bool WantsSample(Dialogs& dialogs, const std::string& cheque) {
  return dialogs.Show({.text = "This will print a SAMPLE of the " + cheque +
                               " for printer alignment purposes.  The real " + cheque +
                               " can only be generated through Tenora expense entry.  Comtinue to "
                               "print this SAMPLE " +
                               cheque + "?",
                       .title = "Print " + cheque,
                       .buttons = Buttons::kYesNo,
                       .icon = Icon::kQuestion,
                       .default_answer = Answer::kNo}) == Answer::kYes;
}

}  // namespace

bool PrintFromWindow(Session& session, frmLetter& letter,
                     const std::function<bool(frmLetter& printed)>& print) {
  Dialogs& dialogs = session.platform.dialogs;
  if (IsUnfilledTemplate(letter)) {
    dialogs.Say(
        "This letter should be 'Generated' before it is printed.  Select this letter in the left "
        "menu section, and choose the 'Generate Letter(s)' button");
    return false;
  }
  if (letter.members().Kind != session.cheque_word) return print(letter);
  if (!WantsSample(dialogs, session.cheque_word)) return false;
  frmLetter sample(session);
  sample.rtfLetter.SetTextRTF(letter.rtfLetter.TextRTF());
  sample.members() = letter.members();
  if (const auto error = sample.InsertChequeDetails(kSamplePayee, kSampleAmount)) {
    ShowError(dialogs, "frmMain - mnuPrint_Click", *error);
    return false;
  }
  return print(sample);
}

}  // namespace tenora
