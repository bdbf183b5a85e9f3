// Which dictionaries are installed, and which one to use for a language.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>

#include "platform/runtime/text.h"
#include "platform/runtime/user_folders.h"
#include "platform/spelling/spelling.h"

namespace tenora::spelling {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFallbackLanguage = "en_GB";

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// "en_NZ" of "en_NZ.UTF-8" or "en-nz@euro".
std::string PlainLanguage(std::string_view locale) {
  std::string language(locale.substr(0, locale.find_first_of(".@")));
  std::ranges::replace(language, '-', '_');
  return language;
}

std::string_view Family(std::string_view language) {
  return language.substr(0, language.find('_'));
}

// Countries with (mostly) British spelling; only American English differs.
constexpr std::array<std::string_view, 4> kBritishSpelling{"en_AU", "en_GB", "en_NZ", "en_ZA"};

}  // namespace

std::vector<fs::path> DictionaryFolders() {
  std::vector<fs::path> folders;
  for (const std::string& folder : Split(Environment("DICPATH"), ":")) {
    if (!folder.empty()) folders.emplace_back(folder);
  }
  folders.push_back(HomeFolder() / ".local/share/hunspell");
  folders.emplace_back("/usr/local/share/hunspell");
  folders.emplace_back("/usr/share/hunspell");
  folders.emplace_back("/usr/share/myspell/dicts");
  return folders;
}

std::vector<std::string> InstalledLanguages(const std::vector<fs::path>& folders) {
  std::vector<std::string> languages;
  for (const fs::path& folder : folders) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      const fs::path& path = entry->path();
      std::error_code missing;
      if (path.extension() != ".aff") continue;
      if (!fs::exists(fs::path(path).replace_extension(".dic"), missing)) continue;
      languages.push_back(path.stem().string());
    }
  }
  std::ranges::sort(languages);
  languages.erase(std::unique(languages.begin(), languages.end()), languages.end());
  return languages;
}

std::string NearestLanguage(std::string_view wanted, const std::vector<std::string>& installed) {
  const std::string language = PlainLanguage(wanted);
  const auto is_installed = [&](std::string_view name) {
    return std::ranges::any_of(installed,
                               [&](const std::string& own) { return EqualsNoCase(own, name); });
  };
  std::vector<std::string> candidates{language};
  const auto british = std::ranges::find_if(
      kBritishSpelling, [&](std::string_view name) { return EqualsNoCase(name, language); });
  if (british != kBritishSpelling.end() || EqualsNoCase(Family(language), "en")) {
    // New Zealand's nearest is Australia, which stands first.
    for (const std::string_view name : kBritishSpelling) candidates.emplace_back(name);
  }
  for (const std::string& own : installed) {
    if (EqualsNoCase(Family(own), Family(language))) candidates.push_back(own);
  }
  for (const std::string_view name : kBritishSpelling) candidates.emplace_back(name);
  candidates.emplace_back("en_US");
  candidates.insert(candidates.end(), installed.begin(), installed.end());
  const auto found = std::ranges::find_if(candidates, is_installed);
  if (found == candidates.end()) return {};
  return *std::ranges::find_if(installed,
                               [&](const std::string& own) { return EqualsNoCase(own, *found); });
}

std::string LocaleLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const std::string language = PlainLanguage(Environment(name));
    if (language.empty()) continue;
    return language == "C" || language == "POSIX" ? kFallbackLanguage : language;
  }
  return kFallbackLanguage;
}

}  // namespace tenora::spelling
