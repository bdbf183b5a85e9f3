// For whom a saved letter was made. Recipients of one name share a folder, names are corrected and
// files are moved, and no letter says whose it is; what the run logs of the data folder and the
// saves here have noted of its content does.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generation_request.h"
#include "merge/merge_target.h"
#include "rental/caches.h"

namespace tenora {

struct LetterOrigin {
  std::string letter_kind;          // kTenantLetter or kOwnerLetter
  std::string code;                 // of the tenancy or the owner; empty: not known
  std::string template_name = {};   // empty: not known
  std::string recipient_name = {};  // as it was then
};

// For whom the content of this file was made, wherever the file has been moved since. Of several
// that the same content was made for, one with a letter in this folder comes first, and of these
// the one under this name. None where that leaves several, and for what another program has
// changed. Raises nothing.
std::optional<LetterOrigin> OriginOf(const std::filesystem::path& data_folder,
                                     const std::filesystem::path& file);

// What the newest run that made a letter of this name says, whatever the file is now. A log that
// cannot be read says nothing. Raises nothing.
std::optional<LetterOrigin> MadeUnderName(const std::filesystem::path& data_folder,
                                          const std::filesystem::path& file);

// Keeps for OriginOf for whom the content is that was saved in this file. Where that cannot be
// kept, the origin is not known. Raises nothing.
void NoteOrigin(const std::filesystem::path& data_folder, const std::filesystem::path& file,
                std::string_view content, const LetterOrigin& origin);

// Whether the letter was made for this recipient. `code`: of the tenancy or the owner; without one
// the names decide.
bool WasMadeFor(const LetterOrigin& origin, std::string_view letter_kind, std::string_view name,
                std::string_view code);

// The code of the owner of this name; empty where there is none.
std::string OwnerCodeOf(const Caches& caches, std::string_view name);

// One of those whose letters are in one folder.
struct Namesake {
  std::string letter_kind;
  std::string name;
  std::string code;   // of a tenancy
  std::string text;   // what tells them apart, "T00006, 12 High Street, closed"
  std::string email;  // empty: none
};

// The tenancies and the owner of this name, in the order of the caches. Letter case does not count:
// some servers do not keep such folders apart.
std::vector<Namesake> RecipientsCalled(const Caches& caches, std::string_view recipient_name);
// The same; empty where there is only one.
std::vector<Namesake> NamesakesOf(const Caches& caches, std::string_view recipient_name);

// That recipient as the caches have it now, perhaps under another name; none where it is gone.
std::optional<Namesake> AsItIsNow(const Caches& caches, const OtherRecipient& recipient);

// The one that a letter is for; null if none of them is.
const Namesake* FindNamesake(const std::vector<Namesake>& namesakes, std::string_view letter_kind,
                             std::string_view tenant_code);

}  // namespace tenora
