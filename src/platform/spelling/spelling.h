// Dictionaries and suggestions. Text is UTF-8 whatever a dictionary's own encoding is.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::spelling {

struct Options {
  // "en_NZ"; where there is no such dictionary, the nearest one serves (NearestLanguage).
  std::string language;
  // One word a line; need not exist. Empty: words are added for this run only.
  std::filesystem::path user_words;
  // Where dictionaries are searched; by default the system's and the user's folders.
  std::vector<std::filesystem::path> folders;
};

// The folders of DICPATH, the user's and the system's.
std::vector<std::filesystem::path> DictionaryFolders();

// The languages of the installed dictionaries ("en_AU", "en_GB"), each once, in order.
std::vector<std::string> InstalledLanguages(
    const std::vector<std::filesystem::path>& folders = DictionaryFolders());

// The installed language that serves a locale name ("en_NZ.UTF-8") best: itself, else a relative in
// spelling (British for New Zealand, not American), else one of the same language, else an English
// one, else the first. Empty when none is installed.
std::string NearestLanguage(std::string_view wanted, const std::vector<std::string>& installed);

// The language that the environment's locale names: LC_ALL, LC_MESSAGES, LANG; "en_GB" for none.
std::string LocaleLanguage();

class Speller {
 public:
  virtual ~Speller() = default;
  // Raises 53 (File not found) when no dictionary is installed and what reading one raises.
  static std::unique_ptr<Speller> Open(const Options& options);

  // The language that was found.
  virtual const std::string& Language() const = 0;

  // One word, without blanks. Quotes, brackets and the like around it are ignored. Words with
  // digits, web and mail addresses and words of more than 100 bytes are never misspelt, nor are
  // words with macrons whose plain form is a word ("Māori").
  virtual bool Misspelt(std::string_view word) const = 0;
  // Best first, at most fifteen.
  virtual std::vector<std::string> Suggestions(std::string_view word) const = 0;

  // Accepts the word from now on and adds it to the user's file. Raises the errors of
  // WriteWholeFile. Words that another program added meanwhile are kept.
  virtual void AddWord(std::string_view word) = 0;
  // Accepts the word, in any letter case, for this speller's lifetime.
  virtual void IgnoreAll(std::string_view word) = 0;
};

// The misspelt words of a text in their order, cut at blanks of any kind, slashes and dashes.
std::vector<std::string> MisspeltWords(const Speller& speller, std::string_view text);

}  // namespace tenora::spelling
