#include "letters/letter_origin.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "letters/file_names.h"
#include "letters/generate/letter_files.h"
#include "letters/generate/origin_notes.h"
#include "letters/generate/run_log.h"
#include "letters/template_library.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// Whether a run has made this letter; it may be another file now.
bool Made(const LoggedLetter& letter, const fs::path& file) {
  if (letter.state == LetterState::kWaiting || letter.state == LetterState::kFailed) return false;
  // A run that was cut short here may have left the name to another one.
  const bool taking = letter.state == LetterState::kSaving || letter.state == LetterState::kHolding;
  return !taking || IsAsWritten(letter, file);
}

LetterOrigin OriginIn(const LoggedRun& run, std::size_t index) {
  const bool tenants = run.request.template_kind == kTemplates;
  const Recipient& recipient = run.request.recipients[index];
  return {std::string(tenants ? kTenantLetter : kOwnerLetter),
          tenants ? recipient.code : recipient.owner_code, run.request.template_name,
          recipient.name};
}

// Calls `use` for each letter that a log names, newest run first, until that gives true.
template <typename Use>
void ForEachLogged(const fs::path& data_folder, Use&& use) {
  std::vector<fs::path> logs = RunLogsIn(data_folder);
  std::ranges::reverse(logs);
  for (const fs::path& log : logs) {
    try {
      const LoggedRun run = RunLog::Contents(log);
      for (std::size_t i = 0; i < run.letters.size(); ++i) {
        if (!run.letters[i].file.empty() && use(run, i)) return;
      }
    } catch (const RuntimeError&) {
      // It is told where the unfinished runs are listed.
    }
  }
}

// For whom a content was made; letters of the same content may be several recipients'.
class Candidates {
 public:
  // `made`: the file that it was made as, `file`: the one it is in now.
  void Add(LetterOrigin origin, const fs::path& made, const fs::path& file) {
    if (made == file) AddTo(of_this_name_, origin);
    if (made.parent_path() == file.parent_path()) AddTo(of_this_folder_, origin);
    AddTo(all_, std::move(origin));
  }
  std::optional<LetterOrigin> Only() const {
    const std::vector<LetterOrigin>& likely = of_this_folder_.empty() ? all_ : of_this_folder_;
    if (likely.size() == 1) return likely.front();
    return of_this_name_.size() == 1 ? std::optional(of_this_name_.front()) : std::nullopt;
  }

 private:
  static void AddTo(std::vector<LetterOrigin>& origins, LetterOrigin origin) {
    const bool known = std::ranges::any_of(origins, [&](const LetterOrigin& each) {
      return WasMadeFor(each, origin.letter_kind, origin.recipient_name, origin.code);
    });
    if (!known) origins.push_back(std::move(origin));
  }

  std::vector<LetterOrigin> all_, of_this_folder_, of_this_name_;
};

std::string TextOf(const TenantRecord& tenant) {
  std::string text = tenant.Reference;
  const std::string& place =
      tenant.PropertyAddress1.empty() ? tenant.PropertyCode : tenant.PropertyAddress1;
  if (!place.empty()) text += ", " + place;
  if (tenant.Closed) text += ", closed";
  return text;
}

Namesake OfTenant(const TenantRecord& tenant) {
  return {std::string(kTenantLetter), tenant.KeyName, tenant.Reference, TextOf(tenant),
          tenant.Email};
}

Namesake OfOwner(const OwnerRecord& owner) {
  return {std::string(kOwnerLetter), owner.Name, {}, "owner " + owner.Code, owner.Email};
}

}  // namespace

std::optional<LetterOrigin> OriginOf(const fs::path& data_folder, const fs::path& file) {
  std::string fingerprint;
  try {
    fingerprint = Fingerprint(ReadWholeFile(file));
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
  Candidates candidates;
  for (const fs::path& log : RunLogsIn(data_folder)) {
    const std::optional<LoggedRun> run = RunLog::Holding(log, fingerprint);
    if (!run) continue;
    for (std::size_t i = 0; i < run->letters.size(); ++i) {
      const LoggedLetter& letter = run->letters[i];
      if (letter.file.empty() || !Wrote(letter, fingerprint)) continue;
      candidates.Add(OriginIn(*run, i), data_folder / letter.file, file);
    }
  }
  for (OriginNote& note : OriginNotesIn(data_folder)) {
    if (note.fingerprint != fingerprint) continue;
    const fs::path saved = data_folder / note.file;
    candidates.Add({std::move(note.letter_kind),
                    std::move(note.code),
                    {},
                    saved.parent_path().filename().string()},
                   saved, file);
  }
  return candidates.Only();
}

bool WasMadeFor(const LetterOrigin& origin, std::string_view letter_kind, std::string_view name,
                std::string_view code) {
  if (origin.letter_kind != letter_kind) return false;
  if (!origin.code.empty() && !code.empty()) return origin.code == code;
  return EqualsNoCase(RecipientFolderName(origin.recipient_name), RecipientFolderName(name));
}

std::string OwnerCodeOf(const Caches& caches, std::string_view name) {
  const auto found = std::ranges::find_if(
      caches.Owners, [name](const OwnerRecord& owner) { return EqualsNoCase(owner.Name, name); });
  return found == caches.Owners.end() ? std::string() : found->Code;
}

std::optional<LetterOrigin> MadeUnderName(const fs::path& data_folder, const fs::path& file) {
  std::optional<LetterOrigin> found;
  ForEachLogged(data_folder, [&](const LoggedRun& run, std::size_t i) {
    if (data_folder / run.letters[i].file != file || !Made(run.letters[i], file)) return false;
    found = OriginIn(run, i);
    return true;
  });
  return found;
}

void NoteOrigin(const fs::path& data_folder, const fs::path& file, std::string_view content,
                const LetterOrigin& origin) {
  AddOriginNote(data_folder, {file.lexically_relative(data_folder).string(), origin.letter_kind,
                              origin.code, Fingerprint(content)});
}

std::vector<Namesake> RecipientsCalled(const Caches& caches, std::string_view recipient_name) {
  std::vector<Namesake> namesakes;
  for (const TenantRecord& tenant : caches.Tenants) {
    if (!EqualsNoCase(tenant.KeyName, recipient_name)) continue;
    namesakes.push_back(OfTenant(tenant));
  }
  for (const OwnerRecord& owner : caches.Owners) {
    if (!EqualsNoCase(owner.Name, recipient_name)) continue;
    namesakes.push_back(OfOwner(owner));
    break;
  }
  return namesakes;
}

std::vector<Namesake> NamesakesOf(const Caches& caches, std::string_view recipient_name) {
  std::vector<Namesake> namesakes = RecipientsCalled(caches, recipient_name);
  if (namesakes.size() < 2) namesakes.clear();
  return namesakes;
}

std::optional<Namesake> AsItIsNow(const Caches& caches, const OtherRecipient& recipient) {
  const std::string& code = recipient.code;
  if (recipient.kind == kTenantLetter) {
    for (const TenantRecord& tenant : caches.Tenants) {
      if (code.empty() ? tenant.KeyName == recipient.name : tenant.Reference == code) {
        return OfTenant(tenant);
      }
    }
    return std::nullopt;
  }
  for (const OwnerRecord& owner : caches.Owners) {
    if (code.empty() ? owner.Name == recipient.name : owner.Code == code) return OfOwner(owner);
  }
  return std::nullopt;
}

const Namesake* FindNamesake(const std::vector<Namesake>& namesakes, std::string_view letter_kind,
                             std::string_view tenant_code) {
  const auto found = std::ranges::find_if(namesakes, [&](const Namesake& namesake) {
    return namesake.letter_kind == letter_kind &&
           (letter_kind == kOwnerLetter || namesake.code == tenant_code);
  });
  return found == namesakes.end() ? nullptr : &*found;
}

}  // namespace tenora
