// The merge codes: the names that may stand between "<<" and ">>", each with where its value comes
// from and how it is fetched, and the openings of the codes that carry parameters of their own. The
// merges, the insert menus, the completion, lint and the check of docs/merge-codes.md all read
// these tables, so a new code is one line in merge_codes.cc and one in the guide.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tenora {

struct MergeSource;

// Which merge fills a template.
enum class TemplateKind { kTenant, kOwner, kCheque };

// Where a code's value comes from.
enum class CodeSource {
  kClock,        // filled even for a tenancy that is not found
  kTenancy,      // the cached record, or a look-up of its own
  kLastPayment,  // fields of the cached record that the last-payment look-up fills first: of the
                 // payment itself
  kRentAccount,  // the same look-up's balance, paid-to dates and rent period
  kOwner,
  kCheque,
  kMenuCommand,  // an entry of the insert menu that no merge replaces
};

struct MergeCode {
  std::string_view name;
  CodeSource source;
  // Raises the errors of the look-up it needs. Null for a menu command.
  std::string (*value)(const MergeSource& source);
};

// The codes of a kind of template. Order and spelling are fixed: existing templates hold these
// names, the insert menus show them in this order and the merges replace them in it.
std::span<const MergeCode> MergeCodesOf(TemplateKind kind);

// The two entries that are commands of the insert menu. No merge replaces a code of their name.
inline constexpr std::string_view kFutureDateItem = "Future Date";
inline constexpr std::string_view kPromptMessageItem = "Prompt Message";

inline constexpr std::string_view kCodeStart = "<<";
inline constexpr std::string_view kCodeEnd = ">>";
inline constexpr std::string_view kTenantCustomPrefix = "TCustom:";
inline constexpr std::string_view kPropertyCustomPrefix = "PCustom:";
inline constexpr std::string_view kOwnerCustomPrefix = "OCustom:";
inline constexpr std::string_view kFutureDateStart = "<<FutureDate:";
inline constexpr std::string_view kPromptStart = "<<?";
inline constexpr std::string_view kPromptEnd = "?>>";
inline constexpr std::string_view kBuildingReceiptNumber = "BuildingReceiptNumber";

}  // namespace tenora
