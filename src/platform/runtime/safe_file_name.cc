#include "platform/runtime/safe_file_name.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kForbidden = "*?<>|";  // on Windows, besides those with a substitute
constexpr std::array<std::string_view, 6> kDevices{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
constexpr std::array<std::string_view, 2> kNumberedDevices{"COM", "LPT"};
// Windows accepts superscript digits here.
constexpr std::array<std::string_view, 3> kDeviceSuperscripts{"\u00B9", "\u00B2", "\u00B3"};

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

bool IsForbidden(char32_t c) {
  return c < 0x80 && kForbidden.find(static_cast<char>(c)) != std::string_view::npos;
}

// Windows looks at what stands before the first dot, without the blanks at its end.
bool NamesDevice(std::string_view name) {
  const std::string_view stem = TrimBlanks(name.substr(0, name.find('.')));
  const auto is_stem = [&](std::string_view device) { return EqualsNoCase(stem, device); };
  if (std::ranges::any_of(kDevices, is_stem)) return true;
  return std::ranges::any_of(kNumberedDevices, [&](std::string_view device) {
    if (!StartsWithNoCase(stem, device)) return false;
    const std::string_view number = stem.substr(device.size());
    return (number.size() == 1 && IsDigit(number[0])) ||
           std::ranges::find(kDeviceSuperscripts, number) != kDeviceSuperscripts.end();
  });
}

// FNV-1a: the same on every machine and in every version, since folders are found again by it.
std::uint32_t Hash(std::string_view text) {
  std::uint32_t hash = 0x811C9DC5U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193U;
  return hash;
}

std::string WithHash(std::string_view safe, std::string_view name, std::size_t longest) {
  std::array<char, 16> suffix{};
  const int length = std::snprintf(suffix.data(), suffix.size(), "~%08x", Hash(name));
  std::string result(BoundedUtf8(safe, longest - static_cast<std::size_t>(length)));
  return result.append(suffix.data());
}

bool EndsInHash(std::string_view name) {
  constexpr std::size_t kSuffix = 9;
  if (name.size() < kSuffix) return false;
  const std::string_view suffix = name.substr(name.size() - kSuffix);
  return suffix.front() == '~' &&
         suffix.substr(1).find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

struct SafeName {
  std::string text;
  bool ambiguous = false;  // another name may become the same text
};

enum class Rules { kVersion1, kWindows };

SafeName Sanitized(std::string_view name, Rules rules) {
  const bool windows = rules == Rules::kWindows;
  SafeName safe;
  while (!name.empty()) {
    const char32_t c = TakeCodePoint(name);
    if (c == U'/' || c == U'\\' || (windows && c == U':')) {
      safe.text += '-';
    } else if (windows && c == U'"') {
      safe.text += '`';
    } else if (IsControl(c) || (windows && IsForbidden(c))) {
      safe.text += '_';
      safe.ambiguous = true;
    } else {
      AppendUtf8(safe.text, c);
    }
  }
  safe.text.erase(0, std::min(safe.text.find_first_not_of(' '), safe.text.size()));
  const std::size_t dots = std::min(safe.text.find_first_not_of('.'), safe.text.size());
  std::fill_n(safe.text.begin(), dots, '_');
  safe.text.erase(safe.text.find_last_not_of(". ") + 1);
  const bool device = windows && NamesDevice(safe.text);
  if (device) safe.text.insert(0, "_");
  safe.ambiguous = safe.ambiguous || dots > 0 || device || safe.text.empty();
  return safe;
}

std::string FileName(std::string_view name, std::size_t longest, Rules rules) {
  SafeName safe = Sanitized(name, rules);
  if (safe.ambiguous || safe.text.size() > longest) return WithHash(safe.text, name, longest);
  return std::move(safe.text);
}

}  // namespace

std::string SafeFileName(std::string_view name, std::size_t longest) {
  return FileName(name, longest, Rules::kWindows);
}

std::string FileNameFault(std::string_view given, std::size_t longest) {
  const std::string_view name = TrimBlanks(given);
  std::string forbidden;
  bool control = false;
  for (std::string_view rest = name; !rest.empty();) {
    const char32_t c = TakeCodePoint(rest);
    control = control || IsControl(c);
    if (c != U'/' && c != U'\\' && c != U':' && c != U'"' && !IsForbidden(c)) continue;
    if (forbidden.find(static_cast<char>(c)) != std::string::npos) continue;
    forbidden.append(" ").append(1, static_cast<char>(c));
  }
  if (!forbidden.empty()) return "it contains" + forbidden;
  if (control) return "it contains characters that cannot be seen";
  if (name.starts_with('.')) return "it begins with a dot";
  if (name.ends_with('.')) return "it ends in a dot";
  if (NamesDevice(name)) return "Windows keeps this name for a device";
  if (name.size() > longest) return "it is too long";
  return {};
}

std::string FileNameWithHash(std::string_view name, std::size_t longest) {
  return WithHash(Sanitized(name, Rules::kWindows).text, name, longest);
}

std::string DistinctFileName(std::string_view name, std::size_t longest) {
  std::string safe = SafeFileName(name, longest);
  return safe == name && !EndsInHash(name) ? safe : FileNameWithHash(name, longest);
}

std::string FileNameOfVersion1(std::string_view name, std::size_t longest) {
  return FileName(name, longest, Rules::kVersion1);
}

}  // namespace tenora
