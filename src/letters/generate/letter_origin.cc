#include "letters/letter_origin.h"

#include <algorithm>
#include <cstddef>

#include "letters/generate/letter_files.h"
#include "letters/generate/run_log.h"
#include "letters/template_library.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

bool Made(const LoggedLetter& letter, const fs::path& data_folder, const fs::path& file) {
  if (letter.file.empty() || data_folder / letter.file != file) return false;
  if (letter.state == LetterState::kWaiting || letter.state == LetterState::kFailed) return false;
  // A run that was cut short here may have left the name to another one.
  const bool taking = letter.state == LetterState::kSaving || letter.state == LetterState::kHolding;
  return !taking || IsAsHeld(letter, file);
}

std::string TextOf(const TenantRecord& tenant) {
  std::string text = tenant.Reference;
  const std::string& place =
      tenant.PropertyAddress1.empty() ? tenant.PropertyCode : tenant.PropertyAddress1;
  if (!place.empty()) text += ", " + place;
  if (tenant.Closed) text += ", closed";
  return text;
}

}  // namespace

std::optional<LetterOrigin> OriginOf(const fs::path& data_folder, const fs::path& file) {
  std::vector<fs::path> logs = RunLogsIn(data_folder);
  std::ranges::reverse(logs);
  for (const fs::path& log : logs) {
    try {
      const LoggedRun run = RunLog::Contents(log);
      for (std::size_t i = 0; i < run.letters.size(); ++i) {
        if (!Made(run.letters[i], data_folder, file)) continue;
        const bool tenants = run.request.template_kind == kTemplates;
        return LetterOrigin{std::string(tenants ? kTenantLetter : kOwnerLetter),
                            run.request.recipients[i], run.request.template_name};
      }
    } catch (const RuntimeError&) {
      // It is told where the unfinished runs are listed.
    }
  }
  return std::nullopt;
}

std::vector<Namesake> NamesakesOf(const Caches& caches, std::string_view recipient_name) {
  std::vector<Namesake> namesakes;
  for (const TenantRecord& tenant : caches.Tenants) {
    if (!EqualsNoCase(tenant.KeyName, recipient_name)) continue;
    namesakes.push_back(
        {std::string(kTenantLetter), tenant.Reference, TextOf(tenant), tenant.Email});
  }
  for (const OwnerRecord& owner : caches.Owners) {
    if (!EqualsNoCase(owner.Name, recipient_name)) continue;
    namesakes.push_back({std::string(kOwnerLetter), {}, "owner " + owner.Code, owner.Email});
    break;
  }
  if (namesakes.size() < 2) namesakes.clear();
  return namesakes;
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
