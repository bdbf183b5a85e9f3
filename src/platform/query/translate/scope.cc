#include "platform/query/translate/scope.h"

#include <algorithm>

#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

const ScopeColumn* FindColumn(const ScopeSource& source, std::string_view name) {
  for (const ScopeColumn& column : source.columns)
    if (EqualsNoCase(column.name, name)) return &column;
  return nullptr;
}

}  // namespace

const ScopeSource* Scope::FindSource(std::string_view name) const {
  for (const ScopeSource& source : sources_)
    if (EqualsNoCase(source.name, name)) return &source;
  return nullptr;
}

Scope::Match Scope::Find(std::string_view qualifier, std::string_view name) const {
  Match match;
  for (const ScopeSource& source : sources_) {
    if (!qualifier.empty() && !EqualsNoCase(source.name, qualifier)) continue;
    const ScopeColumn* const column = FindColumn(source, name);
    if (column == nullptr) {
      const auto same = [&](const std::string& one) { return EqualsNoCase(one, name); };
      const auto withheld = std::ranges::find_if(source.withheld, same);
      if (withheld != source.withheld.end()) match.withheld = source.name + "." + *withheld;
      continue;
    }
    if (match.column != nullptr) match.ambiguous = true;
    match.column = column;
    match.source = &source;
  }
  if (match.column == nullptr && match.withheld.empty() && outer_ != nullptr) {
    match = outer_->Find(qualifier, name);
    match.outer = true;
  }
  return match;
}

}  // namespace tenora::query
