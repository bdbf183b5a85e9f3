// How a user has arranged the recipients' table: columns, order, room. Kept in the user's settings,
// for each kind of template.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry/registry.h"

namespace tenora {

struct RecipientLayout {
  struct Column {
    std::string name;  // of a fact; empty: the list's text
    int width = 0;     // pixels; 0: the usual

    bool operator==(const Column&) const = default;
  };

  // From the left; none: the usual ones.
  std::vector<Column> columns;
  // The name of the column by which it is sorted; none: in the list's order.
  std::optional<std::string> sorted_by;
  bool descending = false;
  // The widths of the table and of what stands beside it, in pixels; 0: the usual.
  int table_width = 0, options_width = 0;

  bool operator==(const RecipientLayout&) const = default;
};

// What of the settings cannot be read is as usual.
RecipientLayout StoredRecipientLayout(const registry::Registry& registry,
                                      std::string_view template_kind);
// A layout that cannot be stored is not: the letters matter more.
void StoreRecipientLayout(registry::Registry& registry, std::string_view template_kind,
                          const RecipientLayout& layout);

}  // namespace tenora
