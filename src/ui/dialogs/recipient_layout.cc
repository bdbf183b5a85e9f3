#include "ui/dialogs/recipient_layout.h"

#include <algorithm>
#include <charconv>

#include "letters/template_library.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kKey = "SOFTWARE\\Tenora\\Mail";
constexpr auto kHive = registry::Hive::kCurrentUser;
constexpr std::size_t kMostColumns = 200;
constexpr int kWidest = 5000;  // pixels

std::string_view NameFor(std::string_view template_kind) {
  return template_kind == kOwnerTemplates ? "OwnerTable" : "TenantTable";
}

int Pixels(const std::string& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return 0;
  return std::clamp(number, 0, kWidest);
}

}  // namespace

// A line each, its parts between tabs: "column", name, width; "sorted", name, "up" or "down";
// "widths", of the table, of the options.
RecipientLayout StoredRecipientLayout(const registry::Registry& registry,
                                      std::string_view template_kind) {
  RecipientLayout layout;
  registry::StoredValue value;
  if (registry.Query(kHive, kKey, NameFor(template_kind), value) != registry::kSuccess) {
    return layout;
  }
  for (const std::string& line : Split(value.bytes, "\n")) {
    const std::vector<std::string> parts = Split(line, "\t");
    if (parts.size() != 3) continue;
    if (parts[0] == "column" && layout.columns.size() < kMostColumns) {
      layout.columns.push_back({parts[1], Pixels(parts[2])});
    } else if (parts[0] == "sorted") {
      layout.sorted_by = parts[1];
      layout.descending = parts[2] == "down";
    } else if (parts[0] == "widths") {
      layout.table_width = Pixels(parts[1]);
      layout.options_width = Pixels(parts[2]);
    }
  }
  return layout;
}

void StoreRecipientLayout(registry::Registry& registry, std::string_view template_kind,
                          const RecipientLayout& layout) {
  if (StoredRecipientLayout(registry, template_kind) == layout) return;
  std::string text;
  for (const RecipientLayout::Column& column : layout.columns) {
    text += "column\t" + column.name + "\t" + std::to_string(column.width) + "\n";
  }
  if (layout.sorted_by) {
    text += "sorted\t" + *layout.sorted_by + (layout.descending ? "\tdown\n" : "\tup\n");
  }
  text += "widths\t" + std::to_string(layout.table_width) + "\t" +
          std::to_string(layout.options_width) + "\n";
  registry.Set(kHive, kKey, NameFor(template_kind), {registry::ValueType::kText, text});
}

}  // namespace tenora
