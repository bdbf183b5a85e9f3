#include "ui/window/letter/letter_recipient.h"

#include <algorithm>
#include <vector>

#include "letters/letter_origin.h"
#include "letters/template_library.h"

namespace tenora {
namespace {

// Those of the name of a letter's recipient; none for templates.
std::vector<Namesake> NamesakesOf(const Session& session, const LetterMembers& letter) {
  if (letter.Kind != kTenantLetter && letter.Kind != kOwnerLetter) return {};
  return NamesakesOf(session.caches, letter.RecipientName);
}

}  // namespace

bool AskForRecipient(Session& session, frmLetter& letter, const std::string& use) {
  LetterMembers& members = letter.members();
  const std::vector<Namesake> namesakes = NamesakesOf(session, members);
  if (namesakes.empty()) return true;
  if (FindNamesake(namesakes, members.Kind, members.TenantCode) != nullptr) return true;
  std::vector<std::string> items;
  for (const Namesake& namesake : namesakes) {
    items.push_back(namesake.text + ": " +
                    (namesake.email.empty() ? "no e-mail address" : namesake.email));
  }
  const auto chosen = session.platform.dialogs.Choose(
      "Several are called " + members.RecipientName +
          ", and nothing says for which of them this letter was made. " + use,
      items, Dialogs::kNoItem);
  if (!chosen) return false;
  members.Kind = namesakes[*chosen].letter_kind;
  members.TenantCode = namesakes[*chosen].code;
  letter.UpdateCaption();
  return true;
}

std::string WhichRecipient(const Session& session, const LetterMembers& letter) {
  const std::vector<Namesake> namesakes = NamesakesOf(session, letter);
  if (namesakes.empty()) return {};
  const Namesake* const own = FindNamesake(namesakes, letter.Kind, letter.TenantCode);
  if (own != nullptr) return own->text;
  const bool owner = std::ranges::any_of(
      namesakes, [](const Namesake& namesake) { return namesake.letter_kind == kOwnerLetter; });
  return std::to_string(namesakes.size()) + (owner ? " recipients" : " tenancies") +
         " have this name";
}

}  // namespace tenora
