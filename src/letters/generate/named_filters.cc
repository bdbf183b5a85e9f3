#include "letters/named_filters.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/search_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// One value for all: the hive's file is written once then.
constexpr std::string_view kKey = "SOFTWARE\\Tenora\\Mail";
constexpr std::string_view kName = "RecipientFilters";
constexpr auto kHive = registry::Hive::kCurrentUser;

// A filter as a line: kind, name, template and condition between tabs.
constexpr std::size_t kParts = 4;

std::string WithoutBreaks(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return line;
}

std::string LineOf(const NamedFilter& filter) {
  return filter.template_kind + '\t' + filter.name + '\t' + WithoutBreaks(filter.template_name) +
         '\t' + WithoutBreaks(filter.condition);
}

std::optional<NamedFilter> FilterOf(const std::string& line) {
  const std::vector<std::string> parts = Split(line, "\t");
  if (parts.size() != kParts || TrimBlanks(parts[1]).empty()) return std::nullopt;
  return NamedFilter{parts[1], parts[0], parts[3], parts[2]};
}

bool IsCalled(const NamedFilter& filter, std::string_view kind, std::string_view name) {
  return filter.template_kind == kind && FoldedForSearch(filter.name) == FoldedForSearch(name);
}

auto FindIn(std::vector<NamedFilter>& filters, std::string_view kind, std::string_view name) {
  return std::ranges::find_if(
      filters, [&](const NamedFilter& filter) { return IsCalled(filter, kind, name); });
}

void RequireName(std::string_view name) {
  if (TrimBlanks(name).empty() || name.find_first_of("\t\r\n") != std::string_view::npos) {
    throw StandardError(error_number::kInvalidProcedureCall, "a filter needs a name in one line");
  }
}

}  // namespace

std::vector<NamedFilter> NamedFilters::All() const {
  std::vector<NamedFilter> filters;
  registry::StoredValue value;
  if (registry_.Query(kHive, kKey, kName, value) != registry::kSuccess) return filters;
  for (const std::string& line : Split(value.bytes, "\n")) {
    if (auto filter = FilterOf(line)) filters.push_back(std::move(*filter));
  }
  return filters;
}

std::vector<NamedFilter> NamedFilters::List(std::string_view template_kind) const {
  std::vector<NamedFilter> filters = All();
  std::erase_if(filters,
                [&](const NamedFilter& filter) { return filter.template_kind != template_kind; });
  std::ranges::stable_sort(filters, {},
                           [](const NamedFilter& filter) { return FoldedForSearch(filter.name); });
  return filters;
}

std::vector<NamedFilter> NamedFilters::ListFor(std::string_view template_kind,
                                               std::string_view template_name) const {
  std::vector<NamedFilter> filters = List(template_kind);
  std::ranges::stable_partition(
      filters, [&](const NamedFilter& filter) { return filter.template_name == template_name; });
  return filters;
}

std::optional<NamedFilter> NamedFilters::Find(std::string_view template_kind,
                                              std::string_view name) const {
  std::vector<NamedFilter> filters = All();
  const auto found = FindIn(filters, template_kind, name);
  return found == filters.end() ? std::nullopt : std::optional(*found);
}

void NamedFilters::Save(const NamedFilter& filter) {
  RequireName(filter.name);
  std::vector<NamedFilter> filters = All();
  const auto found = FindIn(filters, filter.template_kind, filter.name);
  if (found == filters.end()) {
    filters.push_back(filter);
  } else {
    *found = filter;
  }
  Store(filters);
}

bool NamedFilters::Rename(std::string_view template_kind, std::string_view name,
                          std::string_view new_name) {
  RequireName(new_name);
  std::vector<NamedFilter> filters = All();
  const auto found = FindIn(filters, template_kind, name);
  const auto taken = FindIn(filters, template_kind, new_name);
  if (found == filters.end() || (taken != filters.end() && taken != found)) return false;
  found->name = new_name;
  Store(filters);
  return true;
}

bool NamedFilters::Delete(std::string_view template_kind, std::string_view name) {
  std::vector<NamedFilter> filters = All();
  const auto found = FindIn(filters, template_kind, name);
  if (found == filters.end()) return false;
  filters.erase(found);
  Store(filters);
  return true;
}

void NamedFilters::NoteUse(std::string_view template_kind, std::string_view name,
                           std::string_view template_name) {
  std::vector<NamedFilter> filters = All();
  const auto found = FindIn(filters, template_kind, name);
  if (found == filters.end() || found->template_name == template_name) return;
  found->template_name = template_name;
  Store(filters);
}

void NamedFilters::Store(const std::vector<NamedFilter>& filters) {
  std::string text;
  for (const NamedFilter& filter : filters) text += LineOf(filter) + '\n';
  if (registry_.Set(kHive, kKey, kName, {registry::ValueType::kText, text}) != registry::kSuccess) {
    throw StandardError(error_number::kPathFileAccess, registry_.FileOf(kHive).string());
  }
}

}  // namespace tenora
