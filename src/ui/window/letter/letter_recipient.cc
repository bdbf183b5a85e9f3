#include "ui/window/letter/letter_recipient.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "letters/letter_origin.h"
#include "letters/template_library.h"

namespace tenora {
namespace {

bool IsLetter(const LetterMembers& letter) {
  return letter.Kind == kTenantLetter || letter.Kind == kOwnerLetter;
}

// Those of the name of a letter's recipient; none for templates.
std::vector<Namesake> NamesakesOf(const Session& session, const LetterMembers& letter) {
  if (!IsLetter(letter)) return {};
  return NamesakesOf(session.caches, letter.RecipientName);
}

// "T00001 Noor Whaanga"
std::string MadeForText(const Session& session, const OtherRecipient& made_for) {
  const auto now = AsItIsNow(session.caches, made_for);
  const std::string& name = now ? now->name : made_for.name;
  return made_for.code.empty() ? name : made_for.code + " " + name;
}

// Whom a letter may be for that was made for another one than its recipient.
std::vector<Namesake> PossibleRecipients(const Session& session, const LetterMembers& letter) {
  std::vector<Namesake> possible = RecipientsCalled(session.caches, letter.RecipientName);
  if (auto made_for = AsItIsNow(session.caches, *letter.MadeFor)) {
    possible.insert(possible.begin(), std::move(*made_for));
  }
  return possible;
}

}  // namespace

bool AskForRecipient(Session& session, frmLetter& letter, const std::string& use) {
  LetterMembers& members = letter.members();
  const bool other = IsLetter(members) && members.MadeFor.has_value();
  const std::vector<Namesake> possible =
      other ? PossibleRecipients(session, members) : NamesakesOf(session, members);
  if (!other && possible.empty()) return true;
  if (!other && FindNamesake(possible, members.Kind, members.TenantCode) != nullptr) return true;
  std::vector<std::string> items;
  for (const Namesake& each : possible) {
    const std::string who = other ? each.name + " (" + each.text + ")" : each.text;
    items.push_back(who + ": " + (each.email.empty() ? "no e-mail address" : each.email));
  }
  const std::string why = other ? "This letter was made for " +
                                      MadeForText(session, *members.MadeFor) +
                                      ", and is in the folder of " + members.RecipientName + ". "
                                : "Several are called " + members.RecipientName +
                                      ", and nothing says for which of them this letter was made. ";
  const auto chosen = session.platform.dialogs.Choose(why + use, items, Dialogs::kNoItem);
  if (!chosen) return false;
  members.Kind = possible[*chosen].letter_kind;
  members.TenantCode = possible[*chosen].code;
  members.RecipientName = possible[*chosen].name;
  members.RecipientChosen = true;
  members.MadeFor.reset();
  letter.UpdateCaption();
  return true;
}

std::string WhichRecipient(const Session& session, const LetterMembers& letter) {
  if (IsLetter(letter) && letter.MadeFor) {
    return "made for " + MadeForText(session, *letter.MadeFor);
  }
  const std::vector<Namesake> namesakes = NamesakesOf(session, letter);
  if (namesakes.empty()) return letter.RecipientChosen ? letter.TenantCode : std::string();
  const Namesake* const own = FindNamesake(namesakes, letter.Kind, letter.TenantCode);
  if (own != nullptr) return own->text;
  const bool owner = std::ranges::any_of(
      namesakes, [](const Namesake& namesake) { return namesake.letter_kind == kOwnerLetter; });
  return std::to_string(namesakes.size()) + (owner ? " recipients" : " tenancies") +
         " have this name";
}

}  // namespace tenora
