#include "merge/receipt_counters.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>
#include <vector>

#include "data/sql_text.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using query::EngineDatabase;
using server::NumberSeries;
using server::RunningNumbers;

// Up to here every whole number has a double of its own.
constexpr double kLargestNumber = 9007199254740991;

// In the counters of a file that has handed them over, for programs that do not know the mark:
// earlier releases refuse to count on from a number so large.
constexpr const char* kNoNumber = "9E+99";

// The mark is a row of no tenant's, property's or owner's, which nothing lists.
constexpr const char* kMarkCondition =
    " where parentcode='Tenora' and parenttype=0 and fieldcode='NxtReceiptBy'";
constexpr std::string_view kMarkStart = "server, hand-over ";

std::string ColumnText(EngineDatabase& file, const std::string& sql) {
  const auto rows = file.OpenRecordset(sql, query::kForwardOnly, query::kReadOnly);
  return rows->EndOfFile() ? "" : TextOf(rows->Field(0));
}

// The hand-over that the file is marked with; empty for none.
std::string MarkOf(EngineDatabase& file) {
  const std::string value =
      ColumnText(file, std::string("select [value] from custom_fields") + kMarkCondition);
  return value.starts_with(kMarkStart) ? value.substr(kMarkStart.size()) : value;
}

void SetMark(EngineDatabase& file, const std::string& mark) {
  file.Execute(std::string("delete from custom_fields") + kMarkCondition);
  file.Execute(
      "insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values ('Tenora', 0, "
      "'NxtReceiptBy', " +
      SQLText(std::string(kMarkStart) + mark) + ")");
}

struct Counter {
  std::string building, value;
};

// Of every building, also of one for which nothing was issued yet; the first row where there are
// several.
std::vector<Counter> CountersOf(EngineDatabase& file) {
  std::vector<Counter> counters;
  const auto take = [&](const std::string& sql, bool with_value) {
    const auto rows = file.OpenRecordset(sql, query::kForwardOnly, query::kReadOnly);
    for (; !rows->EndOfFile(); rows->MoveNext()) {
      const std::string building = TextOf(rows->Field(0));
      const bool known = std::ranges::any_of(counters, [&](const Counter& counter) {
        return EqualsNoCase(counter.building, building);
      });
      if (known || building.empty()) continue;
      counters.push_back({building, with_value ? TextOf(rows->Field(1)) : ""});
    }
  };
  take(
      "select parentcode, [value] from custom_fields where parenttype=202 and fieldcode = "
      "'NxtReceipt'",
      true);
  take("select distinct parent_property from property where parent_property <> ''", false);
  return counters;
}

bool HasCounter(EngineDatabase& file, const std::string& building) {
  return !file.OpenRecordset("select [value] from custom_fields" + CounterCondition(building),
                             query::kForwardOnly, query::kReadOnly)
              ->EndOfFile();
}

void StoreCounter(EngineDatabase& file, const std::string& building, const std::string& value) {
  if (HasCounter(file, building)) {
    file.Execute("update custom_fields set [value] = " + SQLText(value) +
                 CounterCondition(building));
  } else {
    file.Execute("insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values (" +
                 SQLText(building) + ", 202, '" + kCounterField + "', " + SQLText(value) + ")");
  }
}

// The counters of a file that is not marked, as numbers.
std::vector<NumberSeries> SeriesOf(const std::vector<Counter>& counters) {
  std::vector<NumberSeries> series;
  for (const Counter& counter : counters) {
    if (counter.value.empty()) continue;
    const std::int64_t last = StoredNumber(counter.value);
    if (last < 0) {
      throw StandardError(
          error_number::kInvalidProcedureCall,
          "the receipt number " + counter.value + " of building " + counter.building);
    }
    series.push_back({counter.building, last});
  }
  return series;
}

std::string NewMark() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::random_device random;
  std::string mark;
  for (int i = 0; i < 16; ++i) mark += kDigits[random() % 16];
  return mark;
}

// Raises 70 for a marked file whose numbers are not this server's to issue or to hand back.
void RequireOurHandOver(const std::string& mark, RunningNumbers& numbers) {
  const std::optional<bool> handed_back = numbers.HandedBack(mark);
  if (!handed_back) {
    throw StandardError(error_number::kPermissionDenied,
                        "the file has handed its receipt numbers over to another server or branch "
                        "(hand-over " +
                            mark +
                            "): there 'tenora server counters --file' hands them back. Where that "
                            "server is gone, enter the numbers in the file by hand");
  }
  // A copy of an older hand-over knows less than a server that issues, which loses nothing by it.
  if (numbers.IssuedHere() || (mark == numbers.Mark() && !*handed_back)) return;
  throw StandardError(error_number::kPermissionDenied,
                      "the file is a copy of a time when the server issued its receipt numbers. "
                      "They were handed back to the file since, and which it has issued from then "
                      "on is not known here: put a later copy back, or enter the numbers in this "
                      "one by hand");
}

// Runs the statements in a transaction of the file's.
template <typename Body>
void InTransaction(EngineDatabase& file, const Body& body) {
  file.BeginTrans();
  try {
    body();
    file.CommitTrans();
  } catch (...) {
    try {
      file.Rollback();
    } catch (const RuntimeError&) {
      // What broke it is what is told.
    }
    throw;
  }
}

}  // namespace

std::string CounterCondition(const std::string& building) {
  return " where parenttype=202 and parentcode = " + SQLText(building) + " and fieldcode = '" +
         kCounterField + "'";
}

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

void RequireIssuedByFile(Database& database) {
  if (database.LookupText("[value]", "custom_fields", kMarkCondition, "").empty()) return;
  throw StandardError(error_number::kPermissionDenied,
                      "the receipt numbers of this file's buildings were handed over to a server; "
                      "templates with <<BuildingReceiptNumber>> are printed from there, or once "
                      "'tenora server counters --file' has handed them back");
}

bool HasHandedOver(EngineDatabase& file) { return !MarkOf(file).empty(); }

// The server knows the numbers before the file is marked, and issues none until it is. So a call
// that was cut short has left the file in charge, or everything at the server but the permission.
HandOver HandOverToServer(EngineDatabase& file, RunningNumbers& numbers) {
  std::string mark = MarkOf(file);
  if (!mark.empty()) {
    RequireOurHandOver(mark, numbers);
    if (numbers.IssuedHere()) {
      if (mark == numbers.Mark()) return HandOver::kAlready;
      InTransaction(file, [&] { SetMark(file, numbers.Mark()); });
    }
    numbers.BeginIssuing();
    return HandOver::kDone;
  }
  // An unmarked file while the server issues: a copy of before the hand-over was put back.
  mark = NewMark();
  InTransaction(file, [&] {
    const std::vector<Counter> counters = CountersOf(file);
    numbers.Keep(mark, SeriesOf(counters));
    for (const Counter& counter : counters) StoreCounter(file, counter.building, kNoNumber);
    SetMark(file, mark);
  });
  numbers.BeginIssuing();
  return HandOver::kDone;
}

// The server stops before the file begins, and keeps the numbers. A file that is a copy of an older
// hand-over takes part in the last one first: so that, cut short, it issues none. A file that has
// handed nothing over may be any: it must not get this branch's numbers.
HandOver HandBackToFile(EngineDatabase& file, RunningNumbers& numbers, Date today) {
  const std::string mark = MarkOf(file);
  if (mark.empty() && numbers.IssuedHere()) {
    throw StandardError(error_number::kPermissionDenied,
                        "the file has not handed over the receipt numbers that the server issues: "
                        "it is another branch's, or a copy of before. Import the branch's own "
                        "file; where that is such a copy, 'tenora server counters --here' makes "
                        "it take part first");
  }
  if (numbers.IssuedHere()) {
    HandOverToServer(file, numbers);
  } else if (mark.empty()) {
    numbers.CloseHandOver();
    return HandOver::kAlready;
  } else {
    RequireOurHandOver(mark, numbers);
  }
  numbers.EndIssuing();
  InTransaction(file, [&] {
    for (const NumberSeries& series : numbers.All()) {
      StoreCounter(file, series.name, std::to_string(series.last));
    }
    file.Execute(
        std::string("delete from custom_fields where parenttype=202 and fieldcode='NxtReceipt' "
                    "and [value]='") +
        kNoNumber + "'");
    file.Execute(std::string("delete from custom_fields") + kMarkCondition);
    if (!numbers.All().empty() &&
        ColumnText(file, "select gl_code from glcodes where gl_code='NxtReceipt' and type=202")
            .empty()) {
      file.Execute(
          "insert into glcodes(gl_code, type, taxable_yn, balancedate, description, bankbalance, "
          "money1) values ('NxtReceipt', 202, 1, " +
          SQLDate(today) + ", 'Next Receipt Number', 0, 0)");
    }
  });
  numbers.CloseHandOver();
  return HandOver::kDone;
}

}  // namespace tenora
