#include "startup/recipient_listing.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::size_t kMostColumns = 1000;

bool IsNumber(FactType type) { return type == FactType::kNumber || type == FactType::kMoney; }

std::string_view TypeName(FactType type) {
  switch (type) {
    case FactType::kText:
      return "text";
    case FactType::kNumber:
      return "number";
    case FactType::kMoney:
      return "amount";
    case FactType::kDate:
      return "date";
    case FactType::kYesNo:
      return "yes or no";
    case FactType::kField:
      return "field of your own";
  }
  return "";
}

std::string JsonValue(const Fact& fact) {
  if (std::holds_alternative<std::monostate>(fact)) return "null";
  if (const auto* yes = std::get_if<bool>(&fact)) return *yes ? "true" : "false";
  const bool number =
      std::holds_alternative<double>(fact) || std::holds_alternative<Currency>(fact);
  return number ? PlainText(fact) : JsonText(PlainText(fact));
}

class Listing {
 public:
  Listing(const RecipientTable& table, const std::vector<std::size_t>& rows,
          const std::vector<ListingColumn>& columns, const Locale& locale, std::ostream& errors,
          bool& complete)
      : table_(table),
        rows_(rows),
        columns_(columns),
        locale_(locale),
        errors_(errors),
        complete_(complete) {}

  TextTable Make(ListingFormat format) {
    for (const std::size_t row : rows_) {
      const std::string remark = table_.Remark(row);
      if (!remark.empty()) errors_ << TerminalLine(remark) << '\n';
    }
    TextTable table;
    for (const ListingColumn& column : columns_) {
      table.columns.push_back({column.name, IsNumber(column.type)});
    }
    for (const std::size_t row : rows_) {
      std::vector<std::string>& cells = table.rows.emplace_back();
      for (const ListingColumn& column : columns_) {
        cells.push_back(CellText(At(row, column), format));
      }
    }
    return table;
  }

 private:
  Fact At(std::size_t row, const ListingColumn& column) {
    RecipientTable::Cell cell = table_.At(row, column.name);
    if (!cell.problem.empty()) {
      complete_ = false;
      errors_ << TerminalLine(table_.Row(row).text + ", code " + table_.Row(row).key + ": " +
                              column.name + ": " + cell.problem)
              << '\n';
    }
    return std::move(cell.fact);
  }

  std::string CellText(const Fact& fact, ListingFormat format) const {
    switch (format) {
      case ListingFormat::kTable:
        return TerminalLine(FactText(locale_, fact));
      case ListingFormat::kCsv:
        return PlainText(fact);
      case ListingFormat::kJson:
        return JsonValue(fact);
    }
    return {};
  }

  const RecipientTable& table_;
  const std::vector<std::size_t>& rows_;
  const std::vector<ListingColumn>& columns_;
  const Locale& locale_;
  std::ostream& errors_;
  bool& complete_;
};

}  // namespace

ListingColumn ColumnOf(std::string_view name, const FactNames& names) {
  std::string_view trimmed = TrimBlanks(name);
  // As a condition has fields whose names hold blanks.
  if (trimmed.starts_with('[') && trimmed.ends_with(']')) {
    trimmed = TrimBlanks(trimmed.substr(1, trimmed.size() - 2));
  }
  if (const FactNames::Name* const found = names.Find(trimmed)) return {found->name, found->type};
  if (names.IsField(trimmed)) return {std::string(trimmed), FactType::kField};
  std::vector<std::string_view> all;
  for (const FactNames::Name& one : names.Names()) all.push_back(one.name);
  const std::string near = NearestName(trimmed, all);
  std::string possible = "the names are ";
  for (const std::string_view one : all) {
    possible += (possible.back() == ' ' ? "" : ", ") + std::string(one);
  }
  throw ConditionError("There is no column \"" + std::string(trimmed) + "\"" +
                           (near.empty() ? "" : "; is " + near + " meant?"),
                       possible);
}

std::vector<ListingColumn> ListingColumns(std::string_view text,
                                          const std::vector<std::string>& usual,
                                          const FactNames& names) {
  std::vector<ListingColumn> columns;
  if (text.empty()) {
    for (const std::string& name : usual) columns.push_back(ColumnOf(name, names));
  } else if (EqualsNoCase(TrimBlanks(text), "all")) {
    for (const FactNames::Name& name : names.Names()) columns.push_back({name.name, name.type});
  } else {
    for (const std::string& name : Split(text, ",")) columns.push_back(ColumnOf(name, names));
  }
  if (columns.size() > kMostColumns) throw ConditionError("There are too many columns");
  return columns;
}

void PrintColumnNames(std::ostream& output, const FactNames& names) {
  std::size_t width = 0;
  for (const FactNames::Name& name : names.Names()) width = std::max(width, WidthOf(name.name));
  for (const FactNames::Name& name : names.Names()) {
    output << TerminalLine(name.name) << std::string(width - WidthOf(name.name) + 2, ' ')
           << TypeName(name.type) << '\n';
  }
}

TextTable ListingOf(const RecipientTable& table, const std::vector<std::size_t>& rows,
                    const std::vector<ListingColumn>& columns, ListingFormat format,
                    const Locale& locale, std::ostream& errors, bool& complete) {
  return Listing(table, rows, columns, locale, errors, complete).Make(format);
}

TextTable JoinBranches(const std::vector<BranchListing>& listings, ListingFormat format) {
  const bool json = format == ListingFormat::kJson;
  TextTable all{.columns = {{"Branch"}}, .rows = {}};
  for (const auto& [branch, table] : listings) {
    std::vector<std::size_t> places;
    for (const TextColumn& column : table.columns) {
      const auto known =
          std::find_if(all.columns.begin() + 1, all.columns.end(),
                       [&](const TextColumn& one) { return one.name == column.name; });
      places.push_back(static_cast<std::size_t>(known - all.columns.begin()));
      if (known == all.columns.end()) all.columns.push_back(column);
    }
    for (const std::vector<std::string>& cells : table.rows) {
      std::vector<std::string>& row = all.rows.emplace_back(all.columns.size(), json ? "null" : "");
      row.front() = json                            ? JsonText(branch)
                    : format == ListingFormat::kCsv ? branch
                                                    : TerminalLine(branch);
      for (std::size_t i = 0; i < cells.size(); ++i) row[places[i]] = cells[i];
    }
  }
  for (std::vector<std::string>& row : all.rows) {
    row.resize(all.columns.size(), json ? "null" : "");
  }
  return all;
}

}  // namespace tenora
