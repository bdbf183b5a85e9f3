// The names of what a template can repeat and of the columns that this has, the codes behind a
// repetition, and the formats. The merge, the Insert menu, the completion, lint and the check of
// docs/merge-codes.md all read these tables.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "merge/fact.h"
#include "merge/merge_codes.h"

namespace tenora {

enum class CollectionKind {
  kPayment,
  kRentPeriod,
  kOutstandingPeriod,
  kInspection,
  kRentChange,
  kLedgerEntry,
  kProperty,
  kTenancy,
};

struct CollectionColumn {
  std::string_view name;
  FactType type;
  // Of amounts: those of several rows make a sum.
  bool summed = true;
};

// What <<Each …>> repeats for.
struct Collection {
  CollectionKind kind;
  std::string_view name, plural;
  bool of_tenancy;  // of a tenancy; else of an owner
  std::span<const CollectionColumn> columns;
  std::string_view day = {};  // the column that "since" and "until" mean; empty for none

  // All names that a row has. A tenancy's are those of tenant templates.
  const FactNames& Names() const;
  // "Number of Payments", and "Total Payment Amount" and the like for each amount.
  std::string CountName() const;
  std::vector<std::string> TotalNames() const;
};

std::span<const Collection> Collections();
// Letter case and the number of blanks aside; null for none.
const Collection* FindCollection(std::string_view name);

// The amount that a code of a sum adds up: "Payment Amount" of "Total Payment Amount".
inline constexpr std::string_view kTotalStart = "Total ";
inline constexpr std::string_view kCountStart = "Number of ";
// What an account owed before the first day of <<Each Ledger Entry since …>>.
inline constexpr std::string_view kOpeningBalance = "Opening Balance";

// How a value is printed: the word behind the colon of <<Print Date:short>>.
enum class ValueFormat {
  kUsual,
  kLong,
  kShort,
  kMonth,
  kWeekday,
  kWords,
  kCurrency,
  kWhole,
  kCapitals,
  kSmallLetters,
  kTitle,
};

struct FormatName {
  std::string_view name;
  ValueFormat format;
  bool for_text, for_number, for_money, for_date;
};

std::span<const FormatName> FormatNames();
// Letter case aside.
const FormatName* FindFormat(std::string_view name);
bool Fits(const FormatName& format, FactType type);
// "long, short, month, weekday": those for values of a type.
std::string FormatsFor(FactType type);

// The facts of a kind of template's recipients; none of cheques'.
const FactNames& RecipientFactNames(TemplateKind kind);
// Those that are no codes of their own and are printed by their name all the same: "Days Behind".
std::vector<std::string_view> PrintedFacts(TemplateKind kind);

}  // namespace tenora
