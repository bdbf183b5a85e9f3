#include "letters/generate/post_list.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "letters/generate/run_summary.h"
#include "letters/template_library.h"
#include "platform/runtime/csv_field.h"

namespace tenora {
namespace {

using AddressLines = std::array<std::string, 3>;

struct Addressee {
  std::string code;
  AddressLines address;
  std::string email;
};

bool IsBlank(const AddressLines& lines) {
  return std::ranges::all_of(lines, [](const std::string& line) { return line.empty(); });
}

// Who has moved out gets letters where the office can reach them.
Addressee Of(const TenantRecord& tenant) {
  AddressLines address{tenant.PropertyAddress1, tenant.PropertyAddress2, tenant.PropertyAddress3};
  const AddressLines contact{tenant.TenantAddress1, tenant.TenantAddress2, tenant.TenantAddress3};
  if (tenant.Closed && !IsBlank(contact)) address = contact;
  return {tenant.Reference, address, tenant.Email};
}

Addressee Of(const OwnerRecord& owner) {
  const AddressLines postal{owner.Postal1, owner.Postal2, owner.Postal3};
  const AddressLines street{owner.Street1, owner.Street2, owner.Street3};
  return {owner.Code, IsBlank(postal) ? street : postal, owner.Email};
}

// By what letters are made for: the tenancy's code, or the owner's name.
class Addressees {
 public:
  Addressees(const Caches& caches, std::string_view template_kind)
      : caches_(caches), tenants_(template_kind == kTemplates) {
    for (const TenantRecord& tenant : caches.Tenants) {
      if (tenants_) all_.emplace(tenant.Reference, Of(tenant));
    }
    for (const OwnerRecord& owner : caches.Owners) {
      if (!tenants_) all_.emplace(owner.Name, Of(owner));
    }
  }

  Addressee Find(const Recipient& recipient) const {
    std::string key = recipient.code;
    if (!tenants_) key = recipient.name;
    if (tenants_ && key.empty()) key = caches_.ReferenceByKeyName(recipient.name);
    const auto found = all_.find(key);
    return found == all_.end() ? Addressee{recipient.code, {}, {}} : found->second;
  }

 private:
  const Caches& caches_;
  const bool tenants_;
  std::map<std::string, Addressee> all_;
};

std::string_view ResultOf(LetterState state, Destination destination) {
  if (IsDone(state, destination)) return "done";
  if (InDoubt(state)) return "in doubt";
  if (HeldBack(state)) return "held back";
  if (state == LetterState::kNoAddress) return "no e-mail address";
  if (state == LetterState::kFailed) return "failed";
  return "not finished";
}

}  // namespace

const std::string kPostListBegin =
    "\xEF\xBB\xBFNumber,Name,Code,Address 1,Address 2,Address 3,E-mail,File,Result,Reason\r\n";

std::string PostList(const LoggedRun& run, const std::filesystem::path& data_folder,
                     const Caches& caches) {
  const Addressees addressees(caches, run.request.template_kind);
  std::string text = kPostListBegin;
  for (std::size_t number = 1; number <= run.letters.size(); ++number) {
    const LoggedLetter& letter = run.letters[number - 1];
    const Recipient& recipient = run.request.recipients[number - 1];
    const Addressee to = addressees.Find(recipient);
    const std::string_view result = ResultOf(letter.state, run.request.destination);
    // That of a letter in order is where it went.
    const bool reason = result != "done" && !InDoubt(letter.state);
    text += std::to_string(number);
    for (const std::string& cell :
         {recipient.name, to.code, to.address[0], to.address[1], to.address[2], to.email,
          ReportOf(run, number, data_folder).file.string(), std::string(result),
          reason ? letter.detail : std::string()}) {
      text += "," + CsvField(NoFormula(cell));
    }
    text += "\r\n";
  }
  return text;
}

}  // namespace tenora
