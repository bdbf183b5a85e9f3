#include "merge/building_receipt_number.h"

#include <cstdint>
#include <string>

#include "data/sql_text.h"
#include "merge/merge_codes.h"
#include "merge/receipt_counters.h"
#include "merge/replace_code.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr const char* kFirstNumber = "1000";

// The number for the next letter of a building.
struct NextNumber {
  std::string text;
  bool counted = false;  // false: the building has no counter yet
};

std::string Next(std::int64_t last) { return std::to_string(last == 0 ? 1000 : last + 1); }

NextNumber ReadCounter(Database& database, const std::string& building) {
  RecordsetPtr counter;
  database.CreateSet(counter, "select * from custom_fields" + CounterCondition(building),
                     query::kForwardOnly, query::kReadOnly);
  if (database.DataIsEmpty(counter)) return {kFirstNumber};
  const std::int64_t last = StoredNumber(TextOf(counter->Field("value")));
  return {Next(last), true};
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
  RequireIssuedByFile(target.session.database);
  number = ReadCounter(target.session.database, building);
  Take(target, building, number);
  return transaction.Commit();
}

void RequireIssuedByServer(query::NumberServer& server) {
  if (server.Issues()) return;
  throw StandardError(error_number::kPermissionDenied,
                      "the template has <<BuildingReceiptNumber>>, and the receipt numbers of this "
                      "branch are issued by its file; 'tenora server counters --here' hands them "
                      "over to the server");
}

// The number that the next letter would get.
NextNumber LookUp(Database& database, const std::string& building) {
  query::NumberServer* const server = database.Numbers();
  if (server == nullptr) {
    RequireIssuedByFile(database);
    return ReadCounter(database, building);
  }
  RequireIssuedByServer(*server);
  return {Next(server->Last(building).value_or(0))};
}

}  // namespace

void RequireReceiptNumbers(Session& session, const RichTextBox& letter) {
  if (session.database.OnlyLooks()) return;
  if (!SourceContains(letter, TagInSource(letter, kBuildingReceiptNumber))) return;
  const OpenedDatabase opened(session.database);
  if (!session.database.IsOpen()) return;  // which was told
  query::NumberServer* const server = session.database.Numbers();
  if (server == nullptr) return RequireIssuedByFile(session.database);
  RequireIssuedByServer(*server);
  if (!server->MayTake()) {
    throw StandardError(error_number::kPermissionDenied,
                        "the template has <<BuildingReceiptNumber>>, and this login takes no "
                        "receipt numbers on the server; one with the role worker does");
  }
}

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
    number = LookUp(session.database, building);
    Note(target, MergeFact::kNumberLeft, number);
  } else if (query::NumberServer* const server = session.database.Numbers()) {
    number.text = std::to_string(server->Issue(building));
  } else if (!Issue(target, building, number)) {
    return false;
  }
  ReplaceCode(target, kBuildingReceiptNumber, number.text);
  return true;
}

}  // namespace tenora
