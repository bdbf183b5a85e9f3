#include "platform/query/query_test_support.h"

#include <gtest/gtest.h>

#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {

std::vector<std::string> RowsOf(EngineDatabase& database, std::string_view sql) {
  std::vector<std::string> rows;
  const auto set = database.OpenRecordset(sql, kForwardOnly, kReadOnly);
  for (; !set->EndOfFile(); set->MoveNext()) {
    std::string row;
    for (std::size_t i = 0; i < set->FieldNames().size(); ++i) {
      const Value value = set->Field(i);
      if (i > 0) row.push_back('|');
      row += IsNull(value) ? "null" : TextOf(value);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

SampleAgency::SampleAgency()
    : workspace_(Workspace::Create([] { return Date::FromCalendar(2026, 11, 21, 9, 30); })),
      database_(workspace_->OpenDatabase(test::SampleDatabase())) {}

Value SampleAgency::Single(std::string_view sql) {
  const auto set = database_->OpenRecordset(sql, kForwardOnly, kReadOnly);
  return set->Field(std::size_t{0});
}

RuntimeError SampleAgency::Error(std::string_view sql) {
  return test::RaisedBy([&] { Rows(sql); }).value_or(RuntimeError(0, "no error"));
}

int SampleAgency::ErrorNumber(std::string_view sql) {
  return test::NumberOf([&] { Rows(sql); });
}

}  // namespace tenora::query
