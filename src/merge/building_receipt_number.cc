#include "merge/building_receipt_number.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "data/sql_text.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr const char* kCounterField = "NxtReceipt";
constexpr const char* kFirstNumber = "1000";

std::string CounterCondition(const std::string& building) {
  return " where parenttype=202 and parentcode = " + SQLText(building) +
         " and fieldcode = " + SQLText(kCounterField);
}

// Up to here every whole number has a double of its own.
constexpr double kLargestNumber = 9007199254740991;

// The number stored, 0 for a text that is not a number.
std::int64_t StoredNumber(const std::string& text) {
  double number = 0;
  try {
    number = ToDouble(text);
  } catch (const RuntimeError& error) {
    if (error.number() != error_number::kTypeMismatch) throw;
  }
  if (std::abs(number) > kLargestNumber) {
    throw StandardError(error_number::kOverflow, "the receipt number " + text);
  }
  return static_cast<std::int64_t>(std::nearbyint(number));
}

// The number for the next letter of a building.
struct NextNumber {
  std::string text;
  bool counted = false;  // false: the building has no counter yet
};

NextNumber ReadCounter(Database& database, const std::string& building) {
  RecordsetPtr counter;
  database.CreateSet(counter, "select * from custom_fields" + CounterCondition(building),
                     query::kForwardOnly, query::kReadOnly);
  if (database.DataIsEmpty(counter)) return {kFirstNumber};
  const std::int64_t last = StoredNumber(TextOf(counter->Field("value")));
  return {std::to_string((last == 0 ? 999 : last) + 1), true};
}

// For a building without a counter: whether it can be given one. Where the account code exists
// already, made for another building, no counter is written and the next letter gets 1000 again:
// this is deliberate.
bool CanBeginSeries(Database& database) {
  return database
      .LookupText("gl_code", "glcodes", " where gl_code = 'NxtReceipt' and type = 202", "")
      .empty();
}

void Note(const MergeTarget& target, MergeFact fact, const NextNumber& number) {
  target.letter.Notes.Add({fact, std::string(kBuildingReceiptNumber), number.text, {}});
}

// Stores the number as issued, with the commit.
void Take(const MergeTarget& target, const std::string& building, const NextNumber& number) {
  Session& session = target.session;
  if (number.counted) {
    session.database.ExecuteSQL("update custom_fields set [value] = '" + number.text + "'" +
                                CounterCondition(building));
  } else if (CanBeginSeries(session.database)) {
    CreateReceiptNumberRecords(session, kCounterField, "Next Receipt Number", kFirstNumber,
                               building);
  } else {
    Note(target, MergeFact::kNumberAgain, number);
  }
}

// False when nothing was kept.
bool Issue(const MergeTarget& target, const std::string& building, NextNumber& number) {
  Database::Transaction transaction(target.session.database);
  if (!transaction.IsOpen()) return false;
  number = ReadCounter(target.session.database, building);
  Take(target, building, number);
  return transaction.Commit();
}

}  // namespace

void CreateReceiptNumberRecords(Session& session, std::string_view account_code,
                                std::string_view description, std::string_view value,
                                std::string_view parent_code) {
  const std::string account = SQLText(account_code);
  session.database.ExecuteSQL(
      "insert into glcodes(gl_code, type, taxable_yn, balancedate, description, bankbalance, "
      "money1) values (" +
      account + ", 202, 1, " + SQLDate(session.platform.clock.Today()) + ", " +
      SQLText(description) + ", 0, 0)");
  if (value.empty() || parent_code.empty()) return;
  session.database.ExecuteSQL(
      "insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values (" +
      SQLText(parent_code) + ", 202, " + account + ", " + SQLText(value) + ")");
}

bool InsertBuildingReceiptNumber(const MergeTarget& target, std::string_view property_code) {
  Session& session = target.session;
  const std::string building = session.database.LookupText(
      "parent_property", "property", " where code = " + SQLText(property_code), "");
  if (building.empty()) {
    ReplaceCode(target, kBuildingReceiptNumber, "");
    return true;
  }
  NextNumber number;
  if (session.database.OnlyLooks()) {
    number = ReadCounter(session.database, building);
    Note(target, MergeFact::kNumberLeft, number);
  } else if (!Issue(target, building, number)) {
    return false;
  }
  ReplaceCode(target, kBuildingReceiptNumber, number.text);
  return true;
}

}  // namespace tenora
