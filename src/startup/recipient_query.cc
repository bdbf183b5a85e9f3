#include "startup/recipient_query.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <utility>

#include "letters/named_filters.h"
#include "merge/recipient_facts.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/text.h"
#include "startup/recipient_listing.h"

namespace tenora {
namespace {

// The text of the condition, of both where two are given. Each must be whole by itself.
std::string ConditionText(Session& session, const GenerateCall& call, const FactNames& names) {
  std::vector<std::string> parts;
  if (!call.named_filter.empty()) {
    const NamedFilters filters(session.platform.registry);
    const std::optional<NamedFilter> found = filters.Find(call.Kind(), call.named_filter);
    if (!found) {
      std::string possible;
      for (const NamedFilter& filter : filters.List(call.Kind())) {
        possible += (possible.empty() ? "there are " : ", ") + ("\"" + filter.name + "\"");
      }
      throw ConditionError("There is no filter \"" + call.named_filter + "\"",
                           possible.empty() ? "none has been saved" : possible);
    }
    parts.push_back(found->condition);
  }
  if (!call.where.empty()) parts.push_back(call.where);
  for (const std::string& part : parts) static_cast<void>(Condition(part, names));
  if (parts.size() == 1) return parts.front();
  return "(" + parts.front() + ") and (" + parts.back() + ")";
}

void RequireByProperty(const std::vector<std::string>& names, const GenerateCall& call) {
  if (call.filter.by_property) return;
  for (const std::string& name : names) {
    if (!IsPropertyFact(call.Kind(), name)) continue;
    throw ConditionError(name + " is of owners listed once for each property: give --by-property");
  }
}

void RequireTemplate(const std::vector<std::string>& names, const GenerateCall& call) {
  if (!call.template_name.empty() || std::ranges::find(names, kLastLetterFact) == names.end()) {
    return;
  }
  throw ConditionError(std::string(kLastLetterFact) +
                       " is of the letters of one template: name it with --template");
}

}  // namespace

RecipientQuery::RecipientQuery(Session& session, const GenerateCall& call, std::ostream& errors)
    : session_(session), call_(call), errors_(errors) {
  const OpenedDatabase opened(session_.database);
  names_ = RecipientFactNames(session_, call_.Kind());
  if (!call_.where.empty() || !call_.named_filter.empty()) {
    condition_.emplace(ConditionText(session_, call_, *names_), *names_);
    RequireTemplate(condition_->Names(), call_);
    RequireByProperty(condition_->Names(), call_);
  }
}

RecipientTable RecipientQuery::Read(std::vector<std::string> names) {
  if (condition_) {
    names.insert(names.end(), condition_->Names().begin(), condition_->Names().end());
  }
  const OpenedDatabase opened(session_.database);
  return RecipientTable(session_,
                        {.template_kind = std::string(call_.Kind()),
                         .by_property = call_.filter.by_property,
                         .template_name = call_.template_name,
                         .data_folder = session_.database.DataFolder()},
                        names);
}

std::vector<std::size_t> RecipientQuery::Rows(const RecipientTable& table) {
  RecipientTable::Selection selection =
      table.Select(call_.filter, condition_ ? &*condition_ : nullptr);
  for (const auto& [row, problem] : selection.undecided) {
    complete_ = false;
    errors_ << TerminalLine(table.Row(row).text + ", code " + table.Row(row).key +
                            ", is left out: " + problem)
            << '\n';
  }
  return std::move(selection.rows);
}

std::vector<ListingColumn> RecipientQuery::Columns() const {
  const bool by_property = call_.filter.by_property;
  std::vector<ListingColumn> columns =
      ListingColumns(call_.columns, UsualColumns(call_.Kind(), by_property), *names_);
  // The usual columns, and all of them, are those that can be filled.
  if (call_.columns.empty() && call_.template_name.empty()) {
    std::erase_if(columns,
                  [](const ListingColumn& column) { return column.name == kLastLetterFact; });
  }
  if (EveryColumn() && !by_property) {
    std::erase_if(columns, [&](const ListingColumn& column) {
      return IsPropertyFact(call_.Kind(), column.name);
    });
  }
  return columns;
}

bool RecipientQuery::EveryColumn() const { return EqualsNoCase(TrimBlanks(call_.columns), "all"); }

RecipientQuery::Chosen RecipientQuery::Choose(const std::vector<ListingColumn>& columns) {
  std::vector<std::string> names;
  for (const ListingColumn& column : columns) names.push_back(column.name);
  std::string sorted_by;
  if (!call_.sort.empty()) {
    sorted_by = ColumnOf(call_.sort, *names_).name;
    names.push_back(sorted_by);
  }
  if (!EveryColumn()) RequireTemplate(names, call_);
  RequireByProperty(names, call_);
  Chosen chosen{Read(names), {}};
  chosen.rows = Rows(chosen.table);
  if (!sorted_by.empty()) chosen.table.Sort(chosen.rows, sorted_by, call_.descending);
  return chosen;
}

void RecipientQuery::List(std::ostream& output, const std::string& before_line) {
  const auto [table, rows] = Choose({});
  for (const std::size_t row : rows) {
    output << TerminalLine(before_line + table.Row(row).text) << '\n';
  }
}

TextTable RecipientQuery::Table() {
  const std::vector<ListingColumn> columns = Columns();
  const auto [table, rows] = Choose(columns);
  return ListingOf(table, rows, columns, call_.Format(), session_.platform.locale, errors_,
                   complete_);
}

std::vector<Recipient> RecipientQuery::Recipients() {
  const RecipientTable table = Read({});
  std::vector<Recipient> recipients;
  for (const std::size_t row : Rows(table)) recipients.push_back(table.Row(row).recipient);
  return recipients;
}

void PrintColumnHelp(Session& session, const GenerateCall& call, std::ostream& output) {
  if (!session.database.CanBeRead()) {
    return PrintColumnNames(output, *RecipientFactNames(call.Kind()));
  }
  const OpenedDatabase opened(session.database);
  PrintColumnNames(output, RecipientFactNames(session, call.Kind()));
}

}  // namespace tenora
