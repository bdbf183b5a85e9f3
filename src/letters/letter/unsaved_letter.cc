#include "letters/unsaved_letter.h"

#include <charconv>
#include <cstdio>
#include <functional>
#include <map>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/format.h"

namespace tenora {
namespace {

constexpr std::string_view kFirstLine = "Tenora unsaved letter, version 1\n";
constexpr const char* kTimeForm = "yyyy-mm-dd hh:nn:ss";

std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    if (c == '\\') line += "\\\\";
    if (c == '\n') line += "\\n";
    if (c == '\r') line += "\\r";
    if (c != '\\' && c != '\n' && c != '\r') line += c;
  }
  return line;
}

std::string FromOneLine(std::string_view line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\' || i + 1 == line.size()) {
      text += line[i];
      continue;
    }
    const char c = line[++i];
    text += c == 'n' ? '\n' : c == 'r' ? '\r' : c;
  }
  return text;
}

template <typename Number>
std::optional<Number> ReadNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<Date> ReadTime(const std::string& text) {
  CalendarTime time;
  const int read = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d", &time.year, &time.month,
                               &time.day, &time.hour, &time.minute, &time.second);
  if (read != 6) return std::nullopt;
  try {
    return Date::FromCalendar(time);
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<FileStamp> StampOf(const std::filesystem::path& path) {
  std::error_code no_time, no_size;
  const auto time = std::filesystem::last_write_time(path, no_time);
  const std::uintmax_t size = std::filesystem::file_size(path, no_size);
  if (no_time || no_size) return std::nullopt;
  return FileStamp{time.time_since_epoch().count(), size};
}

std::string WriteUnsavedLetter(const UnsavedLetter& letter) {
  std::string source(kFirstLine);
  const auto add = [&](const char* name, std::string_view value) {
    source.append(name).append("=").append(OneLine(value)).append("\n");
  };
  add("title", letter.title);
  add("recipient", letter.recipient);
  add("kind", letter.kind);
  add("tenant", letter.tenant_code);
  add("receipt", std::to_string(letter.receipt_number));
  add("path", letter.path);
  if (letter.saved) {
    add("saved-time", std::to_string(letter.saved->time));
    add("saved-size", std::to_string(letter.saved->size));
  }
  add("program", letter.program_folder);
  add("kept", FormatDate(letter.kept, kTimeForm));
  return source.append("\n").append(letter.text);
}

std::optional<UnsavedLetter> ReadUnsavedLetter(std::string_view source) {
  if (!source.starts_with(kFirstLine)) return std::nullopt;
  source.remove_prefix(kFirstLine.size());
  std::map<std::string, std::string, std::less<>> values;
  while (!source.starts_with('\n')) {
    const std::size_t end = source.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = source.substr(0, end);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    values[std::string(line.substr(0, equals))] = FromOneLine(line.substr(equals + 1));
    source.remove_prefix(end + 1);
  }
  const auto kept = ReadTime(values["kept"]);
  const auto receipt = ReadNumber<std::int32_t>(values["receipt"]);
  if (!kept || !receipt) return std::nullopt;
  UnsavedLetter letter{.title = values["title"],
                       .recipient = values["recipient"],
                       .kind = values["kind"],
                       .tenant_code = values["tenant"],
                       .receipt_number = *receipt,
                       .path = values["path"],
                       .saved = std::nullopt,
                       .program_folder = values["program"],
                       .kept = *kept,
                       .text = std::string(source.substr(1))};
  const auto time = ReadNumber<std::int64_t>(values["saved-time"]);
  const auto size = ReadNumber<std::uint64_t>(values["saved-size"]);
  if (time && size) letter.saved = FileStamp{*time, *size};
  return letter;
}

}  // namespace tenora
