// Filters of recipients that a user has named: "Arrears 14 days". They are the user's own, in the
// per-user settings.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry/registry.h"

namespace tenora {

struct NamedFilter {
  std::string name;                // letter case does not count
  std::string template_kind;       // whose recipients: "Templates" or "Owner Templates"
  std::string condition;           // as text; what it names may be gone from the database
  std::string template_name = {};  // the template it was last used with; empty before

  bool operator==(const NamedFilter&) const = default;
};

// Every call reads or writes the settings as they are at that moment: another window may have
// changed them.
class NamedFilters {
 public:
  explicit NamedFilters(registry::Registry& registry) : registry_(registry) {}

  // Those of a kind, by name. Settings that cannot be read have none.
  std::vector<NamedFilter> List(std::string_view template_kind) const;
  // The same, those last used with this template first.
  std::vector<NamedFilter> ListFor(std::string_view template_kind,
                                   std::string_view template_name) const;
  std::optional<NamedFilter> Find(std::string_view template_kind, std::string_view name) const;

  // All of these raise 75 (Path/File access error) when the settings cannot be saved.
  // In place of the one of the same kind and name, if there is one. Raises 5 for a name that is
  // blank, and for line breaks and tabs in a name.
  void Save(const NamedFilter& filter);
  // False when there is none of the old name, or another has the new one; nothing is changed then.
  bool Rename(std::string_view template_kind, std::string_view name, std::string_view new_name);
  // False when there is none.
  bool Delete(std::string_view template_kind, std::string_view name);
  // Notes that it was used; nothing for one that is not there.
  void NoteUse(std::string_view template_kind, std::string_view name,
               std::string_view template_name);

 private:
  std::vector<NamedFilter> All() const;
  void Store(const std::vector<NamedFilter>& filters);

  registry::Registry& registry_;
};

}  // namespace tenora
