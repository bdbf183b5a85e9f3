#include "platform/registry/hive_file.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora::registry {
namespace {

constexpr std::string_view kHeading = "Tenora settings, version 1";
constexpr std::string_view kClosing = "End of settings";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNumberStart = "dword:";

bool BreaksLine(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029;
}

void AppendCode(std::string& text, const char* pattern, unsigned code) {
  std::array<char, 16> buffer{};
  std::snprintf(buffer.data(), buffer.size(), pattern, code);
  text += buffer.data();
}

// Backslashes and quotes stay readable as they are, since paths are edited by hand; what a line
// cannot hold is written by its number. `quote_ends` is for names, which end at the first quote.
std::string Escape(std::string_view text, bool quote_ends) {
  std::string result;
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t c = TakeCodePoint(text);
    const bool broken_byte = c == 0xFFFD && before.size() - text.size() == 1;
    const bool looks_escaped = before.starts_with("<U+") || before.starts_with("<0x");
    if (broken_byte) {
      AppendCode(result, "<0x%02X>", static_cast<unsigned char>(before[0]));
    } else if (BreaksLine(c) || looks_escaped || (quote_ends && c == '"')) {
      AppendCode(result, "<U+%04X>", static_cast<unsigned>(c));
    } else {
      AppendUtf8(result, c);
    }
  }
  return result;
}

std::optional<std::string> Unescape(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const bool code_point = text.starts_with("<U+");
    if (!code_point && !text.starts_with("<0x")) {
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.begin() + 3, text.end(), number, 16);
    if (error != std::errc() || end == text.end() || *end != '>') return std::nullopt;
    if (number > (code_point ? 0x10FFFFU : 0xFFU)) return std::nullopt;
    if (code_point) {
      AppendUtf8(result, number);
    } else {
      result += static_cast<char>(number);
    }
    text.remove_prefix(static_cast<std::size_t>(end + 1 - text.begin()));
  }
  return result;
}

std::string WrittenValue(const StoredValue& value) {
  if (value.type == ValueType::kText) {
    return std::string("\"").append(Escape(value.bytes, false)).append("\"");
  }
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < value.bytes.size() && i < 4; ++i) {
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(value.bytes[i])) << (8 * i);
  }
  std::string text(kNumberStart);
  AppendCode(text, "%08x", number);
  return text;
}

std::optional<StoredValue> ReadValue(std::string_view text) {
  if (text.size() >= 2 && text.starts_with('"') && text.ends_with('"')) {
    std::optional<std::string> bytes = Unescape(text.substr(1, text.size() - 2));
    if (!bytes) return std::nullopt;
    return StoredValue{ValueType::kText, *std::move(bytes)};
  }
  if (!StartsWithNoCase(text, kNumberStart)) return std::nullopt;
  text.remove_prefix(kNumberStart.size());
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number, 16);
  if (text.empty() || error != std::errc() || end != text.end()) return std::nullopt;
  StoredValue value{ValueType::kDword, {}};
  for (int i = 0; i < 4; ++i) value.bytes += static_cast<char>((number >> (8 * i)) & 0xFF);
  return value;
}

std::string_view TrimLine(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

std::optional<HiveFile> HiveFile::Parse(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  HiveFile file;
  std::string notes;
  Key* current = nullptr;
  bool headed = false, closed = false;
  for (const std::string& raw : Split(text, "\n")) {
    const std::string_view line = TrimLine(raw);
    if (line.empty()) continue;
    if (closed) return std::nullopt;
    if (!headed) {
      if (line != kHeading) return std::nullopt;
      headed = true;
    } else if (line == kClosing) {
      closed = true;
    } else if (!file.ParseLine(line, notes, current)) {
      return std::nullopt;
    }
  }
  if (!closed) return std::nullopt;
  file.closing_notes_ = std::move(notes);
  return file;
}

// `notes` gathers comment lines until a key or value takes them.
bool HiveFile::ParseLine(std::string_view line, std::string& notes, Key*& current) {
  if (line.starts_with(';')) {
    notes.append(line).append("\n");
    return true;
  }
  if (line.starts_with('[')) {
    const std::optional<std::string> path = Unescape(line.substr(1, line.size() - 2));
    if (line.size() < 3 || !line.ends_with(']') || !path) return false;
    current = &KeyAt(*path);
    current->notes += std::exchange(notes, {});
    return true;
  }
  const std::size_t name_end = line.find('"', 1);
  if (!line.starts_with('"') || name_end == std::string_view::npos || !current) return false;
  const std::optional<std::string> name = Unescape(line.substr(1, name_end - 1));
  std::string_view rest = TrimLine(line.substr(name_end + 1));
  if (!name || !rest.starts_with('=')) return false;
  std::optional<StoredValue> value = ReadValue(TrimLine(rest.substr(1)));
  if (!value) return false;
  current->values.push_back({std::exchange(notes, {}), *name, *std::move(value)});
  return true;
}

std::string HiveFile::Text() const {
  std::string text(kHeading);
  text += "\n";
  for (const Key& key : keys_) {
    text.append("\n").append(key.notes).append("[").append(Escape(key.path, false)).append("]\n");
    for (const NamedValue& value : key.values) {
      text.append(value.notes).append("\"").append(Escape(value.name, true)).append("\" = ");
      text.append(WrittenValue(value.value)).append("\n");
    }
  }
  return text.append("\n").append(closing_notes_).append(kClosing).append("\n");
}

// Where a hand-edited file names a value twice, the last one counts.
const StoredValue* HiveFile::Find(std::string_view key, std::string_view name) const {
  const StoredValue* found = nullptr;
  for (const Key& candidate : keys_) {
    if (!EqualsNoCase(candidate.path, key)) continue;
    for (const NamedValue& value : candidate.values) {
      if (EqualsNoCase(value.name, name)) found = &value.value;
    }
  }
  return found;
}

void HiveFile::Set(std::string_view key, std::string_view name, const StoredValue& value) {
  NamedValue* place = nullptr;
  Key& owner = KeyAt(key);
  for (NamedValue& candidate : owner.values) {
    if (EqualsNoCase(candidate.name, name)) place = &candidate;
  }
  if (place == nullptr) place = &owner.values.emplace_back(NamedValue{{}, std::string(name), {}});
  place->value = value;
}

HiveFile::Key& HiveFile::KeyAt(std::string_view path) {
  for (Key& key : keys_) {
    if (EqualsNoCase(key.path, path)) return key;
  }
  return keys_.emplace_back(Key{{}, std::string(path), {}});
}

}  // namespace tenora::registry
