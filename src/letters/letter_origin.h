// For whom a saved letter was made. Recipients of one name share a folder, and no letter says whose
// it is; what the run logs of the data folder and the saves here have noted of its content does.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generation_request.h"
#include "rental/caches.h"

namespace tenora {

struct LetterOrigin {
  std::string letter_kind;         // kTenantLetter or kOwnerLetter
  std::string code;                // of a tenancy
  std::string template_name = {};  // empty: not known
};

// For whom the content of this file was made, whatever the file has been called since. None for
// what another program has changed, and for what was made for several, none of them under this
// name. Raises nothing.
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

// One of several whose letters are in one folder.
struct Namesake {
  std::string letter_kind;
  std::string code;   // of a tenancy
  std::string text;   // what tells them apart, "T00006, 12 High Street, closed"
  std::string email;  // empty: none
};

// The tenancies and the owner of this name, in the order of the caches; empty where there is only
// one. Letter case does not count: some servers do not keep such folders apart.
std::vector<Namesake> NamesakesOf(const Caches& caches, std::string_view recipient_name);

// The one that a letter is for; null if none of them is.
const Namesake* FindNamesake(const std::vector<Namesake>& namesakes, std::string_view letter_kind,
                             std::string_view tenant_code);

}  // namespace tenora
