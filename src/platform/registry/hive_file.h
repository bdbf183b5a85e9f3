// The text of one hive's file, as docs/settings.md describes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry/registry.h"

namespace tenora::registry {

class HiveFile {
 public:
  // None when the text is not a whole hive file: no heading, no closing line, or a line that is
  // none of the format's.
  static std::optional<HiveFile> Parse(std::string_view text);
  // Comment lines keep their places before the key or value they stood at.
  std::string Text() const;

  // Null when there is no such value. Letter case is ignored.
  const StoredValue* Find(std::string_view key, std::string_view name) const;
  void Set(std::string_view key, std::string_view name, const StoredValue& value);

 private:
  struct NamedValue {
    std::string notes;
    std::string name;
    StoredValue value;
  };
  struct Key {
    std::string notes;
    std::string path;
    std::vector<NamedValue> values;
  };

  Key& KeyAt(std::string_view path);
  bool ParseLine(std::string_view line, std::string& notes, Key*& current);

  std::vector<Key> keys_;
  std::string closing_notes_;
};

}  // namespace tenora::registry
